#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

#include <optional>

/// Pictures as the module's screen takes them over ED2.
namespace screenPicture {

/// The size that `text`, such as "480X272", names. None for other texts, for sizes without pixels,
/// and for sizes that no picture may have.
std::optional<QSize> sizeFrom(const QString &text);

/// Ticks from one picture of `size` to the next: what its bytes take at 6250000 baud, and half a
/// second.
int endTick(const QSize &size);
/// The ticks of an empty picture.
inline constexpr int emptyEndTick = 500;

/// The pixels of `image` stretched to `size`, two bytes each.
QByteArray pixels(const QImage &image, const QSize &size);

} // namespace screenPicture
