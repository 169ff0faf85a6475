#pragma once

#include <QByteArray>
#include <QFont>
#include <QImage>

#include <bitset>

/// How the glyphs of the built-in font look.
struct GlyphStyle
{
    QFont font;        ///< its size does not count
    int horScale = 5;  ///< horizontal scale, in twentieths above that of the cell
    int verScale = 7;  ///< vertical scale, likewise
    int horShift = 8;  ///< in tenths of a pixel to the right
    int verShift = -4; ///< in tenths of a pixel downwards
};

/// Glyphs of the module's built-in font. A cell of size s is s pixels wide and 2s pixels high.
namespace glyph {

inline constexpr int minSize = 4;
inline constexpr int maxSize = 64;
inline constexpr int codes = 128;
using Codes = std::bitset<codes>;

/// The codes that `font`, or what the desktop puts in its place, has a picture for.
Codes codesIn(const QFont &font);

/// `text` in a cell of `size`, white on black, 24 bits a pixel. Black only when the scale leaves
/// nothing of the glyph (less than 1/128 of its height counts as nothing), or when the font lacks a
/// character.
QImage render(int size, const QString &text, const GlyphStyle &style);

/// The bits of `cell`, a picture of 24 bits a pixel: rows from the top, each filled up to whole
/// bytes, the leftmost pixel in bit 7. A pixel is ink when its red, green and blue bytes, read as
/// one number, are 0x3F3F3F at least; so red decides nearly alone. That is wanted.
QByteArray pack(const QImage &cell);

/// The packed glyphs of all codes in cells of `size`, one behind the other: as rendering and
/// packing each alone gives them. `drawn` are the codes that the font has; the others stay empty.
QByteArray block(int size, const GlyphStyle &style, const Codes &drawn);

} // namespace glyph
