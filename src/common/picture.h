#pragma once

#include "common/texts.h"

#include <QByteArray>
#include <QImage>

namespace picture {

/// The files that dialogs offer as pictures.
inline constexpr char filePatterns[] = "*.bmp;*.jpg;*.jpeg;*.png;*.gif";

/// Pictures with more pixels than this are refused before their pixels are allocated.
inline constexpr qint64 maxPixels = 100'000'000;

/// The picture that `content` holds, whatever its format; a null image when it cannot be decoded,
/// or has more than `maxPixels`.
QImage decode(const QByteArray &content);

/// What to tell the user of `content` that decode() gave no picture for.
const Text &refusal(const QByteArray &content);

/// The pixels of `image` as the module stores them: RGB565, 2 bytes a pixel, high byte first, rows
/// from the top, pixels from the left. Alpha is ignored, the colour is the pixel's own.
QByteArray toRgb565(const QImage &image);

} // namespace picture
