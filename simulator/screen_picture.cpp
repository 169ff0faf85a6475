#include "simulator/screen_picture.h"

#include <QBuffer>
#include <QImageReader>
#include <QPainter>

namespace k7 {

namespace {

/// Larger ones are not decoded: a JPEG of a few bytes can claim any size.
constexpr qint64 maxJpegPixels = 4096 * 4096;

/// `value` of `levels` levels as one of 256.
constexpr unsigned widened(unsigned value, unsigned levels)
{
    return (value * 255 + (levels - 1) / 2) / (levels - 1);
}

QImage decodedJpeg(const QByteArray &content)
{
    QBuffer buffer;
    buffer.setData(content);
    QImageReader reader(&buffer, "jpg");
    const QSize size = reader.size();
    return size.isValid() && qint64{size.width()} * size.height() <= maxJpegPixels ? reader.read()
                                                                                   : QImage();
}

} // namespace

QImage unpackPixels(const QByteArray &pixels, const QSize &size)
{
    // Red and the upper half of green stand in the first byte, the rest in the second.
    QRgb first[256];
    QRgb second[256];
    for (unsigned byte = 0; byte < 256; ++byte) {
        first[byte] = 0xFF000000U | widened(byte >> 3, 32) << 16;
        second[byte] = widened(byte & 0x1F, 32);
    }
    QRgb greens[64];
    for (unsigned green = 0; green < 64; ++green)
        greens[green] = widened(green, 64) << 8;

    QImage image(size, QImage::Format_RGB32);
    if (image.isNull())
        return image;
    image.fill(Qt::black);
    const auto *source = reinterpret_cast<const uchar *>(pixels.constData());
    int left = pixels.size() / 2;
    for (int y = 0; y < size.height() && left > 0; ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        const int count = qMin(left, size.width());
        for (int x = 0; x < count; ++x, source += 2)
            row[x] = first[source[0]] | greens[(source[0] & 7) << 3 | source[1] >> 5] |
                     second[source[1]];
        left -= count;
    }
    return image;
}

QImage screenPicture(const ModuleState &state, const QSize &size)
{
    const int page = state.vp.at(picturePageVp);
    const auto stored = state.storedJpegs.constFind(page);
    const bool showsJpeg = !state.showsMemory && stored != state.storedJpegs.constEnd();
    const QByteArray pixels = state.showsMemory ? state.pictureMemory : state.pictures.value(page);
    QImage image = unpackPixels(showsJpeg ? QByteArray() : pixels, size);
    QPainter painter(&image);
    if (showsJpeg)
        painter.drawImage(0, 0, decodedJpeg(*stored));
    for (const ShownJpeg &jpeg : state.overlays)
        painter.drawImage(jpeg.first, jpeg.second, decodedJpeg(jpeg.content));
    return image;
}

} // namespace k7
