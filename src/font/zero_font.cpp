#include "font/zero_font.h"

#include "common/replace_file.h"

#include <QPainter>
#include <QThreadPool>
#include <QVector>
#include <QtConcurrent>

namespace zeroFont {

namespace {

/// The threads of one run, which no font has been used on yet. A font that has drawn at a fraction
/// of a pixel draws large glyphs that fraction of a font unit aside ever after, and each thread has
/// fonts of its own: what is drawn here does not depend on what was drawn before.
class FreshThreads : public QThreadPool
{
public:
    FreshThreads() { setMaxThreadCount(globalInstance()->maxThreadCount()); }
};

QImage draw(const QString &text, const GlyphStyle &style)
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
        for (int size = row.firstSize; size <= row.lastSize; x += size, ++size)
            painter.drawImage(x, row.baseLine - 2 * size, glyph::render(size, text, style));
    }
    return picture;
}

} // namespace

QByteArray make(const GlyphStyle &style, const std::function<void(int)> &showProgress)
{
    const glyph::Codes drawn = glyph::codesIn(style.font);
    FreshThreads threads;
    QVector<QFuture<QByteArray>> blocks;
    for (int size = glyph::minSize; size <= glyph::maxSize; ++size)
        blocks.append(QtConcurrent::run(&threads, &glyph::block, size, style, drawn));
    QByteArray font;
    showProgress(0);
    for (int i = 0; i < blocks.size(); ++i) {
        font += blocks.at(i).result();
        showProgress(i * 5 / 3);
    }
    return font;
}

void write(const QString &folder, const QByteArray &font)
{
    overwriteStart(folder + "/0_ZOLT_ASC.HZK", font);
}

QImage preview(const QString &text, const GlyphStyle &style)
{
    FreshThreads threads;
    return QtConcurrent::run(&threads, &draw, text, style).result();
}

} // namespace zeroFont
