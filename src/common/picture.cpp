#include "common/picture.h"

#include <QBuffer>
#include <QImageReader>
#include <QVector>
#include <QtEndian>

#include <cstring>

namespace picture {

namespace {

/// Reads a picture from memory, by its content.
struct Reader
{
    explicit Reader(const QByteArray &content)
    {
        buffer.setData(content);
        buffer.open(QIODevice::ReadOnly);
        images.setDevice(&buffer);
        images.setDecideFormatFromContent(true);
    }
    bool isTooLarge() const
    {
        const QSize size = images.size();
        return size.isValid() && qint64{size.width()} * size.height() > maxPixels;
    }

    QBuffer buffer;
    QImageReader images;
};

} // namespace

QImage decode(const QByteArray &content)
{
    Reader reader(content);
    return reader.isTooLarge() ? QImage() : reader.images.read();
}

const Text &refusal(const QByteArray &content)
{
    return Reader(content).isTooLarge() ? texts::pictureTooLarge : texts::fileIsNotPicture;
}

QByteArray toRgb565(const QImage &image)
{
    const bool has32Bits =
        image.format() == QImage::Format_RGB32 || image.format() == QImage::Format_ARGB32;
    const QImage pixels = has32Bits ? image : image.convertToFormat(QImage::Format_ARGB32);
    const int width = pixels.width();
    const int rowBytes = 2 * width;
    QByteArray bytes(rowBytes * pixels.height(), Qt::Uninitialized);
    // One row at a time and without branches: the compiler makes vector code of it.
    QVector<quint16> row(width);
    for (int y = 0; y < pixels.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(pixels.constScanLine(y));
        quint16 *out = row.data();
        for (int x = 0; x < width; ++x) {
            const QRgb rgb = line[x];
            const QRgb packed = (rgb >> 8 & 0xF800U) | (rgb >> 5 & 0x07E0U) | (rgb >> 3 & 0x1FU);
            out[x] = qToBigEndian(static_cast<quint16>(packed));
        }
        std::memcpy(bytes.data() + y * rowBytes, out, static_cast<size_t>(rowBytes));
    }
    return bytes;
}

} // namespace picture
