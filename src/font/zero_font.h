#pragma once

#include "common/replace_file.h"
#include "font/glyph.h"

#include <functional>

/// The module's built-in ASCII font: for each cell size from 4 to 64 the packed glyphs of the codes
/// 0 to 127, without header and gaps, 3082752 bytes in all.
namespace zeroFont {

/// The whole file. `showProgress` gets percents, once for each size.
QByteArray make(const GlyphStyle &style, const std::function<void(int)> &showProgress);

/// Writes `font` over the start of 0_ZOLT_ASC.HZK in `folder`. What a longer file holds
/// behind it stays.
Overwritten write(const QString &folder, const QByteArray &font);

/// `text` in all sizes: 540 x 400 pixels in four rows, 24 bits a pixel.
QImage preview(const QString &text, const GlyphStyle &style);

} // namespace zeroFont
