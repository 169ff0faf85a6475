#include "common/read_file.h"
#include "font/my_thread.h"
#include "font/stepwise_zero_font.h"
#include "font/zero_font.h"

#include <QFontDatabase>
#include <QPainter>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtTest>

namespace {

/// One glyph, word for word: an image and a painter of its own, every pixel asked for singly.
QImage plainCell(int size, const QString &text, const GlyphStyle &style)
{
    QImage cell(size, 2 * size, QImage::Format_RGB888);
    cell.setDotsPerMeterX(3780);
    cell.setDotsPerMeterY(3780);
    cell.fill(Qt::black);
    const float horFactor = 1.0F + static_cast<float>(style.horScale) / 20.0F;
    const float verFactor = (1.0F + static_cast<float>(style.verScale) / 20.0F) / horFactor;
    QFont font = style.font;
    font.setPointSizeF(static_cast<qreal>(static_cast<float>(size) * horFactor));
    QPainter painter(&cell);
    painter.setPen(Qt::white);
    painter.setFont(font);
    painter.scale(1.0, static_cast<qreal>(verFactor));
    painter.drawText(QRectF(style.horShift / 10.0, style.verShift / 10.0, size, 2 * size), text,
                     QTextOption());
    return cell;
}

int glyphBytes(int size)
{
    return 2 * size * ((size + 7) / 8);
}

GlyphStyle dejaVu()
{
    return {QFont("DejaVu Sans", 8)};
}
const auto silent = [](int) {};

} // namespace

class TestZeroFont : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(QFontDatabase().families().contains("DejaVu Sans")); }

    void pixelsAreInkByTheirPackedValue()
    {
        const std::pair<QRgb, bool> colors[] = {{0xFFFFFF, true},
                                                {0x3F3F3F, true}, // the threshold
                                                {0x3F3F3E, false},
                                                {0x400000, true}, // red alone
                                                {0x3EFFFF, false}};
        for (const auto &[color, isInk] : colors) {
            QImage cell(8, 1, QImage::Format_RGB888);
            cell.fill(Qt::black);
            cell.setPixelColor(2, 0, QColor(color));
            QCOMPARE(glyph::pack(cell), QByteArray(1, isInk ? '\x20' : '\0'));
        }
    }

    void fontsAreAsIfRenderedGlyphByGlyph()
    {
        GlyphStyle mono{QFont("DejaVu Sans Mono", 8), 0, 0, 0, 0};
        mono.font.setBold(true);
        mono.font.setUnderline(true);
        const QFont sans("DejaVu Sans", 8);
        for (const GlyphStyle &style :
             {dejaVu(), GlyphStyle{QFont("DejaVu Serif", 8)}, mono,
              GlyphStyle{sans, -12, 30, -15, 33}, GlyphStyle{sans, 60, -30, -15, -400}}) {
            const QByteArray font = zeroFont::make(style, silent);
            QCOMPARE(font.size(), 3082752);
            int at = 0;
            int inkGlyphs = 0;
            for (int size = 4; size <= 64; ++size)
                for (int code = 0; code < 128; ++code) {
                    const int bytes = glyphBytes(size);
                    const QByteArray found = font.mid(at, bytes);
                    at += bytes;
                    // The font has the codes from 32 to 126, and the tab, of which an underline
                    // shows.
                    const bool isDrawn = code == 9 || (code >= 32 && code < 127);
                    if (code == 127) // whatever stands in for it
                        continue;
                    const QByteArray expected =
                        isDrawn ? glyph::pack(plainCell(size, QChar(code), style))
                                : QByteArray(bytes, '\0');
                    QVERIFY2(found == expected,
                             qPrintable(
                                 QString("%1 %2:%3").arg(style.font.family()).arg(size).arg(code)));
                    inkGlyphs += found.count('\0') < bytes ? 1 : 0;
                }
            QVERIFY(inkGlyphs > 1000);
        }
    }

    void everyRunGivesTheSame()
    {
        QVector<int> progress;
        const QByteArray first =
            zeroFont::make(dejaVu(), [&progress](int percent) { progress.append(percent); });
        QCOMPARE(progress.size(), 62);
        QCOMPARE(progress.mid(0, 6), (QVector<int>{0, 0, 1, 3, 5, 6}));
        QCOMPARE(progress.mid(59), (QVector<int>{96, 98, 100}));
        QThreadPool::globalInstance()->setMaxThreadCount(1);
        QVERIFY(zeroFont::make(dejaVu(), silent) == first);
        // Whatever was drawn in between.
        GlyphStyle plain = dejaVu();
        plain.horScale = plain.verScale = plain.horShift = plain.verShift = 0;
        const QByteArray atPixels = zeroFont::make(plain, silent);
        plain.horShift = 99;
        zeroFont::make(plain, silent);
        plain.horShift = 0;
        QVERIFY(zeroFont::make(plain, silent) == atPixels);
        QThreadPool::globalInstance()->setMaxThreadCount(QThread::idealThreadCount());
    }

    void whatCannotBeDrawnIsEmpty()
    {
        // No width, no height, or squeezed to almost nothing.
        const std::pair<int, int> scales[] = {
            {-20, 7}, {-500, 500}, {5, -20}, {200, -19}, {500, -22}};
        for (const auto &[horScale, verScale] : scales)
            for (const int size : {4, 33, 64}) {
                const GlyphStyle style{dejaVu().font, horScale, verScale};
                const QByteArray block = glyph::block(size, style, glyph::Codes().set());
                QCOMPARE(block.count('\0'), 128 * glyphBytes(size));
                QCOMPARE(glyph::pack(glyph::render(size, "A", style)).count('\0'),
                         glyphBytes(size));
            }
        // So does a character that no font has, in place of the box that would stand for it.
        QCOMPARE(glyph::pack(glyph::render(64, QString(QChar(0x0378)), dejaVu())).count('\0'),
                 glyphBytes(64));
    }

    void longerFilesKeepTheirEnd()
    {
        const QTemporaryDir folder;
        zeroFont::write(folder.path(), "first content");
        zeroFont::write(folder.path(), "second");
        QCOMPARE(*readFile(folder.filePath("0_ZOLT_ASC.HZK")), QByteArray("secondcontent"));
    }

    void previewShowsAllSizesInFourRows()
    {
        const QImage preview = zeroFont::preview("g", dejaVu());
        QCOMPARE(preview.size(), QSize(540, 400));
        QImage expected(540, 400, QImage::Format_RGB888);
        expected.fill(Qt::black);
        int x = 0;
        for (int size = 4; size <= 64; ++size) {
            if (size == 33 || size == 46 || size == 56)
                x = 0;
            const int baseLine = size <= 32 ? 64 : size <= 45 ? 154 : size <= 55 ? 264 : 392;
            const QImage cell = plainCell(size, "g", dejaVu());
            for (int i = 0; i < size * 2 * size; ++i)
                expected.setPixel(x + i % size, baseLine - 2 * size + i / size,
                                  cell.pixel(i % size, i / size));
            x += size;
        }
        QVERIFY(preview == expected);

        // Nor does it matter what was drawn before, at a fraction of a pixel above all.
        GlyphStyle plain{dejaVu().font, 0, 0, 0, 0};
        const QImage first = zeroFont::preview("A", plain);
        plain.horShift = 99;
        zeroFont::preview("A", plain);
        plain.horShift = 0;
        QVERIFY(zeroFont::preview("A", plain) == first);
    }

    void idlePartsStayIdle()
    {
        const QTemporaryDir folder;
        StepwiseZeroFont stepwise(folder.path());
        for (int tick = 0; tick < 62 * 500; ++tick)
            stepwise.step();
        QVERIFY(QDir(folder.path()).isEmpty());
        const MyThread thread;
        QVERIFY(!thread.isRunning());
    }
};

QTEST_MAIN(TestZeroFont)
#include "tst_zero_font.moc"
