#include "font/zero_font.h"

#include "common/program_folder.h"
#include "common/replace_file.h"

#include <QPainter>
#include <QVector>
#include <QtConcurrent>

#include <numeric>

namespace zeroFont {

QByteArray make(const GlyphStyle &style, const std::function<void(int)> &showProgress)
{
    QVector<int> sizes(glyph::maxSize - glyph::minSize + 1);
    std::iota(sizes.begin(), sizes.end(), glyph::minSize);
    const glyph::Codes drawn = glyph::codesIn(style.font);
    // Each size on its own, on all cores; text may be painted in Qt's threads.
    const std::function<QByteArray(int)> block = [&style, &drawn](int size) {
        return glyph::block(size, style, drawn);
    };
    const QFuture<QByteArray> blocks = QtConcurrent::mapped(sizes, block);
    QByteArray font;
    showProgress(0);
    for (int i = 0; i < sizes.size(); ++i) {
        font += blocks.resultAt(i);
        showProgress(i * 5 / 3);
    }
    return font;
}

void write(const QByteArray &font)
{
    overwriteStart(programFolder() + "/0_ZOLT_ASC.HZK", font);
}

QImage preview(const QString &text, const GlyphStyle &style)
{
    struct Row
    {
        int firstSize;
        int lastSize;
        int baseLine;
    };
    constexpr Row rows[] = {{4, 32, 64}, {33, 45, 154}, {46, 55, 264}, {56, 64, 392}};

    QImage picture(540, 400, QImage::Format_RGB888);
    picture.fill(Qt::black);
    QPainter painter(&picture);
    for (const Row &row : rows) {
        int x = 0;
        for (int size = row.firstSize; size <= row.lastSize; x += size, ++size) {
            QImage cell = glyph::render(size, text, style);
            painter.drawImage(x, row.baseLine - 2 * size, cell);
        }
    }
    return picture;
}

} // namespace zeroFont
