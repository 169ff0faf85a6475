#include "download/screen_picture.h"

#include "common/picture.h"

#include <QStringList>

namespace screenPicture {

std::optional<QSize> sizeFrom(const QString &text)
{
    const QStringList parts = text.split('X');
    if (parts.size() != 2)
        return std::nullopt;
    const QSize size(parts.at(0).toInt(), parts.at(1).toInt());
    const qint64 pixels = static_cast<qint64>(size.width()) * size.height();
    return size.isEmpty() || pixels > picture::maxPixels ? std::nullopt : std::optional(size);
}

int endTick(const QSize &size)
{
    return size.width() * size.height() / 313 + emptyEndTick;
}

QByteArray pixels(const QImage &image, const QSize &size)
{
    // Scaled before the pixels are converted: palette pictures take another nearest-pixel map.
    return picture::toRgb565(image.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation));
}

} // namespace screenPicture
