#include "font/my_thread.h"
#include "font/stepwise_zero_font.h"
#include "font/zero_font.h"

#include <QFile>
#include <QFontDatabase>
#include <QPainter>
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

QByteArray plainBits(const QImage &cell)
{
    QByteArray bits;
    for (int y = 0; y < cell.height(); ++y)
        for (int start = 0; start < cell.width(); start += 8) {
            int byte = 0;
            for (int x = start; x < start + 8; ++x) {
                const QRgb pixel = x < cell.width() ? cell.pixel(x, y) : 0;
                byte = byte << 1 | static_cast<int>((pixel & 0xFFFFFF) >= 0x3F3F3F);
            }
            bits.append(static_cast<char>(byte));
        }
    return bits;
}

int glyphBytes(int size)
{
    return 2 * size * ((size + 7) / 8);
}

/// Where the block of `size` starts in the file.
int blockOffset(int size)
{
    int offset = 0;
    for (int smaller = 4; smaller < size; ++smaller)
        offset += 128 * glyphBytes(smaller);
    return offset;
}

GlyphStyle dejaVu(const char *family = "DejaVu Sans")
{
    GlyphStyle style;
    style.font = QFont(family, 8);
    return style;
}

const auto silent = [](int) {};

} // namespace

Q_DECLARE_METATYPE(GlyphStyle)

class TestZeroFont : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(QFontDatabase().families().contains("DejaVu Sans")); }

    void pixelsAreInkByTheirPackedValue_data()
    {
        QTest::addColumn<QColor>("color");
        QTest::addColumn<bool>("isInk");
        QTest::newRow("white") << QColor(255, 255, 255) << true;
        QTest::newRow("at the threshold") << QColor(0x3F, 0x3F, 0x3F) << true;
        QTest::newRow("just below") << QColor(0x3F, 0x3F, 0x3E) << false;
        QTest::newRow("red alone") << QColor(0x40, 0, 0) << true;
        QTest::newRow("all but red") << QColor(0x3E, 0xFF, 0xFF) << false;
    }

    void pixelsAreInkByTheirPackedValue()
    {
        QFETCH(const QColor, color);
        QFETCH(const bool, isInk);
        QImage cell(8, 1, QImage::Format_RGB888);
        cell.fill(Qt::black);
        cell.setPixelColor(2, 0, color);
        QCOMPARE(glyph::pack(cell), QByteArray(1, isInk ? '\x20' : '\0'));
    }

    void rowsAreFilledUpToBytes()
    {
        QImage cell(9, 18, QImage::Format_RGB888);
        cell.fill(Qt::black);
        cell.setPixelColor(0, 1, Qt::white);
        cell.setPixelColor(8, 17, Qt::white);
        const QByteArray bits = glyph::pack(cell);
        QCOMPARE(bits.size(), 36);
        QCOMPARE(bits.left(4).toHex(), QByteArray("00008000"));
        QCOMPARE(bits.right(2).toHex(), QByteArray("0080"));
    }

    void fontsAreAsIfRenderedGlyphByGlyph_data()
    {
        QTest::addColumn<GlyphStyle>("style");
        QTest::newRow("defaults") << dejaVu();
        QTest::newRow("serif") << dejaVu("DejaVu Serif");
        GlyphStyle style = dejaVu("DejaVu Sans Mono");
        style.font.setBold(true);
        style.font.setUnderline(true);
        style.horScale = style.verScale = style.horShift = style.verShift = 0;
        QTest::newRow("mono, bold, underlined, no scale") << style;
        style = dejaVu();
        style.horScale = -12;
        style.verScale = 30;
        style.horShift = -15;
        style.verShift = 33;
        QTest::newRow("small and stretched") << style;
        style.horScale = 60;
        style.verScale = -30;
        style.verShift = -400;
        QTest::newRow("large and upside down") << style;
    }

    void fontsAreAsIfRenderedGlyphByGlyph()
    {
        QFETCH(const GlyphStyle, style);
        const QByteArray font = zeroFont::make(style, silent);
        QCOMPARE(font.size(), 3082752);
        int inkGlyphs = 0;
        for (int size = 4; size <= 64; ++size)
            for (int code = 0; code < 128; ++code) {
                const int bytes = glyphBytes(size);
                const QByteArray found = font.mid(blockOffset(size) + code * bytes, bytes);
                // The font has the codes from 32 to 126, and the tab, of which an underline shows.
                const bool isDrawn = code == 9 || (code >= 32 && code < 127);
                if (code == 127) // whatever stands in for it
                    continue;
                const QByteArray expected = isDrawn ? plainBits(plainCell(size, QChar(code), style))
                                                    : QByteArray(bytes, '\0');
                QVERIFY2(found == expected, qPrintable(QString("%1:%2").arg(size).arg(code)));
                inkGlyphs += found.count('\0') < bytes ? 1 : 0;
            }
        QVERIFY(inkGlyphs > 1000);
    }

    void everyRunGivesTheSame()
    {
        const GlyphStyle style = dejaVu();
        const QByteArray first = zeroFont::make(style, silent);
        QVERIFY(zeroFont::make(style, silent) == first);
        QThreadPool::globalInstance()->setMaxThreadCount(1);
        QVERIFY(zeroFont::make(style, silent) == first);
        QThreadPool::globalInstance()->setMaxThreadCount(QThread::idealThreadCount());
        // By hand: the letter A in size 4, and the start of the block of size 5.
        QCOMPARE(blockOffset(5), 1024);
        QCOMPARE(first.mid(65 * 8, 8), plainBits(plainCell(4, "A", style)));
        QCOMPARE(first.mid(32 * 8, 8), QByteArray(8, '\0'));
    }

    void scalesWithoutSizeGiveEmptyGlyphs_data()
    {
        QTest::addColumn<int>("horScale");
        QTest::addColumn<int>("verScale");
        QTest::newRow("no width") << -20 << 7;
        QTest::newRow("negative width") << -500 << 500;
        QTest::newRow("no height") << 5 << -20;
        QTest::newRow("squeezed") << 200 << -19;
        QTest::newRow("squeezed upside down") << 500 << -22;
    }

    void scalesWithoutSizeGiveEmptyGlyphs()
    {
        GlyphStyle style = dejaVu();
        QFETCH(const int, horScale);
        QFETCH(const int, verScale);
        style.horScale = horScale;
        style.verScale = verScale;
        for (const int size : {4, 33, 64}) {
            const QByteArray block = glyph::block(size, style, glyph::Codes().set());
            QCOMPARE(block.count('\0'), 128 * glyphBytes(size));
            QCOMPARE(glyph::pack(glyph::render(size, "A", style)).count('\0'), glyphBytes(size));
        }
    }

    void progressGoesInFixedSteps()
    {
        QVector<int> progress;
        zeroFont::make(dejaVu(), [&progress](int percent) { progress.append(percent); });
        QCOMPARE(progress.size(), 62);
        QCOMPARE(progress.mid(0, 6), (QVector<int>{0, 0, 1, 3, 5, 6}));
        QCOMPARE(progress.mid(59), (QVector<int>{96, 98, 100}));
    }

    void longerFilesKeepTheirEnd()
    {
        const QString path = QCoreApplication::applicationDirPath() + "/0_ZOLT_ASC.HZK";
        QFile::remove(path);
        zeroFont::write(QCoreApplication::applicationDirPath(), "first content");
        zeroFont::write(QCoreApplication::applicationDirPath(), "second");
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("secondcontent"));
        QVERIFY(file.remove());
    }

    void previewShowsAllSizesInFourRows()
    {
        const GlyphStyle style = dejaVu();
        const QImage preview = zeroFont::preview("g", style);
        QCOMPARE(preview.size(), QSize(540, 400));
        QImage expected(540, 400, QImage::Format_RGB888);
        expected.fill(Qt::black);
        int x = 0;
        for (int size = 4; size <= 64; ++size) {
            if (size == 33 || size == 46 || size == 56)
                x = 0;
            const int baseLine = size <= 32 ? 64 : size <= 45 ? 154 : size <= 55 ? 264 : 392;
            const QImage cell = plainCell(size, "g", style);
            for (int i = 0; i < size * 2 * size; ++i)
                expected.setPixel(x + i % size, baseLine - 2 * size + i / size,
                                  cell.pixel(i % size, i / size));
            x += size;
        }
        QVERIFY(preview == expected);

        // Nor does it matter what was drawn before, at a fraction of a pixel above all.
        GlyphStyle plain = style;
        plain.horScale = plain.verScale = plain.horShift = plain.verShift = 0;
        const QImage first = zeroFont::preview("A", plain);
        plain.horShift = 99;
        zeroFont::preview("A", plain);
        plain.horShift = 0;
        QVERIFY(zeroFont::preview("A", plain) == first);
    }

    void idlePartsStayIdle()
    {
        const QString path = QCoreApplication::applicationDirPath() + "/0_ZOLT_ASC.HZK";
        QFile::remove(path);
        StepwiseZeroFont stepwise(QCoreApplication::applicationDirPath());
        for (int tick = 0; tick < 62 * 500; ++tick)
            stepwise.step();
        QVERIFY(!QFile::exists(path));
        const MyThread thread;
        QVERIFY(!thread.isRunning());
    }
};

QTEST_MAIN(TestZeroFont)
#include "tst_zero_font.moc"
