#include "font/glyph.h"

#include <QFontMetrics>
#include <QPainter>
#include <QRawFont>

#include <algorithm>
#include <cmath>

namespace glyph {

namespace {

/// 96 dpi: the same font gives the same file whatever the screen is.
constexpr int dotsPerMeter = 3780;
constexpr int inkThreshold = 0x3F3F3F;

constexpr int bytesPerPixel = 3;

/// A cell to paint into, whose pixels can be cleared while it is painted on.
class Cell
{
public:
    explicit Cell(int size)
        : m_pixels(2 * size * bytesPerLine(size), '\0')
        , m_image(reinterpret_cast<uchar *>(m_pixels.data()), size, 2 * size, bytesPerLine(size),
                  QImage::Format_RGB888)
    {
        m_image.setDotsPerMeterX(dotsPerMeter);
        m_image.setDotsPerMeterY(dotsPerMeter);
    }

    void clear() { std::fill(m_pixels.begin(), m_pixels.end(), '\0'); }
    QImage &image() { return m_image; }

private:
    static int bytesPerLine(int size) { return (bytesPerPixel * size + 3) / 4 * 4; }

    QByteArray m_pixels;
    QImage m_image;
};

/// Draws cells of one size into images of that size.
class CellPainter
{
public:
    CellPainter(int size, const GlyphStyle &style)
        : m_size(size)
        , m_font(style.font)
        , m_horFactor(factor(style.horScale))
        , m_shift(style.horShift / 10.0, style.verShift / 10.0)
    {
        if (m_horFactor <= 0)
            return;
        m_font.setPointSizeF(static_cast<qreal>(static_cast<float>(size) * m_horFactor));
        m_verFactor = factor(style.verScale) / m_horFactor;
    }

    /// A scale of 0 or less leaves nothing of the glyphs, and Qt's rasteriser crashes on glyphs
    /// that are squeezed to almost nothing.
    bool isVisible() const { return m_horFactor > 0 && std::abs(m_verFactor) >= minVerFactor; }
    const QFont &font() const { return m_font; }

    void begin(QPainter &painter) const
    {
        painter.setPen(Qt::white);
        painter.setFont(m_font);
        painter.scale(1.0, static_cast<qreal>(m_verFactor));
    }
    void draw(QPainter &painter, const QString &text) const
    {
        painter.drawText(QRectF(m_shift, QSizeF(m_size, 2 * m_size)), text, QTextOption());
    }

private:
    static constexpr float minVerFactor = 1.0F / 128;
    static float factor(int twentieths) { return 1.0F + static_cast<float>(twentieths) / 20.0F; }

    const int m_size;
    QFont m_font;
    const float m_horFactor;
    float m_verFactor = 1.0F;
    const QPointF m_shift;
};

/// Whether `font` has `character`. Control codes are asked of the font itself only: what stands in
/// for missing characters finds boxes for them, or none, depending on what was asked before.
bool hasCharacter(const QFont &font, QChar character)
{
    return character < QLatin1Char(' ') ? QRawFont::fromFont(font).supportsCharacter(character)
                                        : QFontMetrics(font).inFont(character);
}

/// Packs `count` pixels, at most 8, into the high bits of `byte`; returns the pixel behind them.
const uchar *packByte(const uchar *pixel, int count, char &byte)
{
    int packed = 0;
    for (int i = 0; i < count; ++i, pixel += bytesPerPixel) {
        const bool isInk = (pixel[0] << 16 | pixel[1] << 8 | pixel[2]) >= inkThreshold;
        packed |= static_cast<int>(isInk) << (7 - i);
    }
    byte = static_cast<char>(packed);
    return pixel;
}

} // namespace

Codes codesIn(const QFont &font)
{
    Codes found;
    for (ushort code = 0; code < codes; ++code)
        found[code] = hasCharacter(font, QChar(code));
    return found;
}

QImage render(int size, const QString &text, const GlyphStyle &style)
{
    Cell cell(size);
    const CellPainter cells(size, style);
    const bool hasAll = std::all_of(text.begin(), text.end(), [&style](QChar character) {
        return hasCharacter(style.font, character);
    });
    if (cells.isVisible() && hasAll) {
        QPainter painter(&cell.image());
        cells.begin(painter);
        cells.draw(painter, text);
    }
    return cell.image().copy();
}

QByteArray pack(const QImage &cell)
{
    const int width = cell.width();
    const int height = cell.height();
    QByteArray bits((width + 7) / 8 * height, Qt::Uninitialized);
    char *byte = bits.data();
    for (int y = 0; y < height; ++y) {
        const uchar *pixel = cell.constScanLine(y);
        for (int x = 0; x < width; x += 8)
            pixel = packByte(pixel, qMin(8, width - x), *byte++);
    }
    return bits;
}

QByteArray block(int size, const GlyphStyle &style, const Codes &drawn)
{
    Cell cell(size);
    const CellPainter cells(size, style);
    // One painter for all: to begin painting, and to set the font, takes longer than most glyphs.
    QPainter painter(&cell.image());
    cells.begin(painter);
    QByteArray bits;
    for (ushort code = 0; code < codes; ++code) {
        cell.clear();
        if (cells.isVisible() && drawn[code])
            cells.draw(painter, QChar(code));
        bits += pack(cell.image());
    }
    return bits;
}

} // namespace glyph
