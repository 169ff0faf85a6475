#include "imaging/picture_preview.h"

#include "common/picture.h"

#include <cstring>
#include <limits>

namespace {

/// Larger pictures are not made as a whole; each visible pixel is looked up instead.
constexpr int maxScaledSide = 16384;

int scaledSide(int side, int percent)
{
    const qint64 scaled = qint64{side} * percent / 100;
    return static_cast<int>(qBound(qint64{0}, scaled, qint64{std::numeric_limits<int>::max()}));
}

/// The visible part `view` of `picture` stretched to `size`, 32 bits a pixel.
QImage visiblePart(const QImage &picture, const QSize &size, const QRect &view)
{
    const bool isSmall = size.width() <= maxScaledSide && size.height() <= maxScaledSide &&
                         qint64{size.width()} * size.height() <= picture::maxPixels;
    if (isSmall)
        return picture.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation)
            .copy(view)
            .convertToFormat(QImage::Format_ARGB32);
    QImage part(view.size(), QImage::Format_ARGB32);
    for (int y = 0; y < part.height(); ++y)
        for (int x = 0; x < part.width(); ++x)
            part.setPixel(
                x, y,
                picture.pixel(
                    static_cast<int>(qint64{view.x() + x} * picture.width() / size.width()),
                    static_cast<int>(qint64{view.y() + y} * picture.height() / size.height())));
    return part;
}

} // namespace

PicturePreview drawPreview(const QImage &picture, const QSize &screen, int percent,
                           const QPoint &offset, const QSize &canvasSize)
{
    const QSize size(scaledSide(screen.width(), percent), scaledSide(screen.height(), percent));
    PicturePreview preview;
    preview.maxX = qMax(0, size.width() - canvasSize.width());
    preview.maxY = qMax(0, size.height() - canvasSize.height());
    preview.canvas = QImage(canvasSize, QImage::Format_RGB888);
    preview.canvas.fill(QColor("#808080"));
    if (size.isEmpty() || picture.isNull())
        return preview;

    const QPoint corner(qBound(0, offset.x(), preview.maxX), qBound(0, offset.y(), preview.maxY));
    const QImage part = visiblePart(picture, size, QRect(corner, size.boundedTo(canvasSize)));
    for (int y = 0; y < part.height(); ++y) {
        uchar *out = preview.canvas.scanLine(y);
        for (int x = 0; x < part.width(); ++x) {
            const QRgb pixel = part.pixel(x, y);
            *out++ = static_cast<uchar>(qRed(pixel));
            *out++ = static_cast<uchar>(qGreen(pixel));
            *out++ = static_cast<uchar>(qBlue(pixel));
        }
    }
    return preview;
}
