#pragma once

#include <QByteArray>
#include <QImage>

/// An icon of a library.
struct IconRecord
{
    static constexpr int maxSide = 1023;
    static constexpr int maxPosition = 0x7FFF;

    int position = 0; ///< 0 to `maxPosition`
    int width = 0;    ///< 0 to `maxSide`, and so is the height
    int height = 0;
    /// Its 8 bytes of the index; the address in them is the library's business.
    QByteArray entry;
    /// Where its pixels stand: at `offset` of a buffer that records of one library share.
    QByteArray buffer;
    int offset = 0;

    int pixelBytes() const { return 2 * width * height; }
    /// RGB565, high byte first, rows from the top. They last as long as the record.
    QByteArray pixels() const
    {
        return QByteArray::fromRawData(buffer.constData() + offset, pixelBytes());
    }
};

namespace icon {

/// `image` as the icon of `position`. Sides above `maxSide` are scaled down to it, each by itself.
/// The colour of the top left pixel becomes the key colour.
IconRecord fromImage(int position, const QImage &image);

/// The 8 bytes of the index for an icon of that size, without an address. The key colour is the
/// first two bytes of `pixels`, 0 where there are none.
QByteArray entryOf(int width, int height, const QByteArray &pixels);

/// What `record` looks like, 24 bits a pixel. With `hidesKeyColor` all pixels of the colour of the
/// top left one are white. A null image for an icon without pixels.
QImage toImage(const IconRecord &record, bool hidesKeyColor);

} // namespace icon
