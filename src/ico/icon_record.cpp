#include "ico/icon_record.h"

#include "common/big_endian.h"
#include "common/picture.h"

namespace icon {

namespace {

QRgb colorOf(quint16 rgb565)
{
    // The low bits stay 0.
    return qRgb(rgb565 >> 8 & 0xF8, rgb565 >> 3 & 0xFC, rgb565 << 3 & 0xF8);
}

} // namespace

IconRecord fromImage(int position, const QImage &image)
{
    IconRecord record;
    record.position = position;
    record.width = qMin(image.width(), IconRecord::maxSide);
    record.height = qMin(image.height(), IconRecord::maxSide);
    const QSize size(record.width, record.height);
    record.buffer = picture::toRgb565(
        size == image.size() ? image
                             : image.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation));
    record.entry = entryOf(record.width, record.height, record.buffer);
    return record;
}

QByteArray entryOf(int width, int height, const QByteArray &pixels)
{
    QByteArray entry;
    bigEndian::appendByte(entry, static_cast<quint8>(width));
    bigEndian::appendByte(entry, static_cast<quint8>(height));
    bigEndian::appendByte(entry, static_cast<quint8>(((height >> 8) << 4) + ((width >> 8) << 6)));
    entry.append(3, '\0');
    return entry + pixels.left(2).leftJustified(2, '\0');
}

QImage toImage(const IconRecord &record, bool hidesKeyColor)
{
    if (record.pixelBytes() == 0)
        return {};
    QImage image(record.width, record.height, QImage::Format_RGB888);
    const QByteArray pixels = record.pixels();
    const quint16 keyColor = bigEndian::wordAt(pixels, 0);
    for (int y = 0; y < record.height; ++y) {
        uchar *line = image.scanLine(y);
        for (int x = 0; x < record.width; ++x) {
            const quint16 pixel = bigEndian::wordAt(pixels, 2 * (y * record.width + x));
            const QRgb color =
                hidesKeyColor && pixel == keyColor ? qRgb(255, 255, 255) : colorOf(pixel);
            *line++ = static_cast<uchar>(qRed(color));
            *line++ = static_cast<uchar>(qGreen(color));
            *line++ = static_cast<uchar>(qBlue(color));
        }
    }
    return image;
}

} // namespace icon
