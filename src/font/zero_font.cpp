#include "font/zero_font.h"

#include <QPainter>
#include <QThread>
#include <QThreadPool>

#include <array>
#include <atomic>
#include <future>
#include <memory>
#include <vector>

namespace zeroFont {

namespace {

/// Works on a thread that has used no font before, and waits for it when it is destroyed. A font
/// that has drawn at a fraction of a pixel draws large glyphs that fraction of a font unit aside
/// ever after, and each thread has fonts of its own: what is drawn here does not depend on what was
/// drawn before.
class FreshThread
{
public:
    template<typename Work>
    explicit FreshThread(Work work) : m_thread(QThread::create(work))
    {
        m_thread->start();
    }
    FreshThread(FreshThread &&) = default;
    ~FreshThread()
    {
        if (m_thread)
            m_thread->wait();
    }

private:
    std::unique_ptr<QThread> m_thread;
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
    constexpr int sizes = glyph::maxSize - glyph::minSize + 1;
    std::array<std::promise<QByteArray>, sizes> blocks;
    std::atomic<int> next{0};
    const auto work = [&] {
        for (int i = next++; i < sizes; i = next++)
            blocks[static_cast<size_t>(i)].set_value(
                glyph::block(glyph::minSize + i, style, drawn));
    };
    std::vector<FreshThread> threads;
    for (int i = 0; i < QThreadPool::globalInstance()->maxThreadCount(); ++i)
        threads.emplace_back(work);
    QByteArray font;
    showProgress(0);
    for (int i = 0; i < sizes; ++i) {
        font += blocks[static_cast<size_t>(i)].get_future().get();
        showProgress(i * 5 / 3);
    }
    return font;
}

Overwritten write(const QString &folder, const QByteArray &font)
{
    return overwriteStart(folder + "/0_ZOLT_ASC.HZK", font);
}

QImage preview(const QString &text, const GlyphStyle &style)
{
    QImage picture;
    FreshThread([&] { picture = draw(text, style); });
    return picture;
}

} // namespace zeroFont
