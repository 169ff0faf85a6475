// The zero font, on one thread and on all, against rendering it word for word: an image and a
// painter for each glyph, every pixel asked for singly.

#include "bench/measure.h"
#include "font/zero_font.h"

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>
#include <QThreadPool>

namespace {

QByteArray plainGlyph(int size, ushort code, const GlyphStyle &style)
{
    QImage cell(size, 2 * size, QImage::Format_RGB888);
    cell.setDotsPerMeterX(3780);
    cell.setDotsPerMeterY(3780);
    cell.fill(Qt::black);
    const float horFactor = 1.0F + static_cast<float>(style.horScale) / 20.0F;
    const float verFactor = (1.0F + static_cast<float>(style.verScale) / 20.0F) / horFactor;
    QFont font = style.font;
    font.setPointSizeF(static_cast<qreal>(static_cast<float>(size) * horFactor));
    if (QFontMetrics(font).inFont(QChar(code))) {
        QPainter painter(&cell);
        painter.setPen(Qt::white);
        painter.setFont(font);
        painter.scale(1.0, static_cast<qreal>(verFactor));
        painter.drawText(QRectF(style.horShift / 10.0, style.verShift / 10.0, size, 2 * size),
                         QChar(code), QTextOption());
    }
    QByteArray bits;
    for (int y = 0; y < 2 * size; ++y) {
        int byte = 0;
        for (int x = 0; x < size; ++x) {
            const QRgb pixel = cell.pixel(x, y);
            const int value = qRed(pixel) << 16 | qGreen(pixel) << 8 | qBlue(pixel);
            byte = byte << 1 | static_cast<int>(value >= 0x3F3F3F);
            if (x % 8 == 7)
                bits.append(static_cast<char>(byte));
        }
        if (size % 8 != 0)
            bits.append(static_cast<char>(byte << (8 - size % 8)));
    }
    return bits;
}

QByteArray plainFont(const GlyphStyle &style)
{
    QByteArray font;
    for (int size = 4; size <= 64; ++size)
        for (ushort code = 0; code < 128; ++code)
            font += plainGlyph(size, code, style);
    return font;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    GlyphStyle style;
    style.font = QFont("DejaVu Sans", 8);
    const auto make = [&style] { zeroFont::make(style, [](int) {}); };
    const double plain = measure::seconds([&style] { plainFont(style); });
    const double onAll = measure::seconds(make);
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    const double onOne = measure::seconds(make);
    measure::report("PERF_FONT_ONE_THREAD", onOne / plain, 0.55);
    measure::report("PERF_FONT", onAll / plain, 0.35);
    return 0;
}
