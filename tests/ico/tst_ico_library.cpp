#include "ico/ico_library.h"
#include "support/random_bytes.h"

#include <QtTest>

namespace {

constexpr int indexBytes = 0x40000;

QImage plain(int width, int height, const QColor &color)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

/// As many of the largest icons, from position 0 on.
QVector<IconRecord> largestIcons(int count)
{
    QVector<IconRecord> icons(count, icon::fromImage(0, plain(1023, 1023, Qt::red)));
    for (int i = 0; i < count; ++i)
        icons[i].position = i;
    return icons;
}

/// A library by the definition: an index of zeros, then entries and pixels put in one by one.
class ExpectedLibrary
{
public:
    void add(int position, const QImage &image)
    {
        const int w = image.width();
        const int h = image.height();
        const int address = m_file.size() / 2;
        QByteArray pixels;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const QColor c = image.pixelColor(x, y);
                const int word = (c.red() >> 3) << 11 | (c.green() >> 2) << 5 | c.blue() >> 3;
                pixels.append(static_cast<char>(word >> 8)).append(static_cast<char>(word & 0xFF));
            }
        const int entry[] = {w & 0xFF,
                             h & 0xFF,
                             (w >> 8) << 6 | (h >> 8) << 4 | address >> 24,
                             address >> 16 & 0xFF,
                             address >> 8 & 0xFF,
                             address & 0xFF,
                             pixels.at(0),
                             pixels.at(1)};
        for (int i = 0; i < 8; ++i)
            m_file[8 * position + i] = static_cast<char>(entry[i]);
        m_file.append(pixels);
    }
    const QByteArray &file() const { return m_file; }

private:
    QByteArray m_file = QByteArray(indexBytes, '\0');
};

} // namespace

class TestIcoLibrary : public QObject
{
    Q_OBJECT

private slots:
    void librariesAreAsTheyAreDefined()
    {
        QImage first(3, 2, QImage::Format_RGB32);
        for (int i = 0; i < 6; ++i)
            first.setPixel(i % 3, i / 3, qRgb(40 * i, 255 - 30 * i, 17 * i));
        const QImage second = plain(256, 300, QColor(255, 128, 7));
        ExpectedLibrary expected;
        expected.add(32767, first);
        expected.add(0, second);
        const auto file =
            icoLibrary::write({icon::fromImage(32767, first), icon::fromImage(0, second)});
        QVERIFY(file == expected.file());
        QCOMPARE(file->mid(8 * 32767 + 3, 3).toHex(), QByteArray("020000"));
        QCOMPARE(file->mid(3, 3).toHex(), QByteArray("020006"));
    }

    void entriesHoldTheSize()
    {
        const struct
        {
            QSize size;
            const char *entry;
        } cases[] = {
            {{1, 1}, "010100000000f81f"},      {{255, 256}, "ff0010000000f81f"},
            {{256, 1}, "000140000000f81f"},    {{1023, 1023}, "fffff0000000f81f"},
            {{1024, 1}, "ff01c0000000f81f"},   {{1, 1024}, "01ff30000000f81f"},
            {{2000, 500}, "fff4d0000000f81f"},
        };
        for (const auto &[size, entry] : cases) {
            const IconRecord record =
                icon::fromImage(5, plain(size.width(), size.height(), QColor(255, 0, 255)));
            QCOMPARE(record.entry.toHex(), QByteArray(entry));
            QCOMPARE(record.width, qMin(size.width(), 1023));
            QCOMPARE(record.buffer.size(), 2 * record.width * record.height);
        }
    }

    void largePicturesAreClampedSideBySide()
    {
        QImage image = plain(1100, 3, Qt::black);
        for (int y = 0; y < 3; ++y)
            image.setPixelColor(1099, y, Qt::white);
        const IconRecord record = icon::fromImage(0, image);
        QCOMPARE(QSize(record.width, record.height), QSize(1023, 3));
        const QImage scaled = image.scaled(1023, 3, Qt::IgnoreAspectRatio, Qt::FastTransformation);
        for (int x : {0, 500, 1022})
            QCOMPARE(icon::toImage(record, false).pixel(x, 1) == qRgb(0xF8, 0xFC, 0xF8),
                     scaled.pixelColor(x, 1) == QColor(Qt::white));
    }

    void firstIconOfAPositionCounts()
    {
        const QImage kept = plain(2, 2, Qt::red);
        const QImage other = plain(1, 1, Qt::blue);
        ExpectedLibrary expected;
        expected.add(7, kept);
        expected.add(8, other);
        QVERIFY(icoLibrary::write({icon::fromImage(7, kept), icon::fromImage(7, other),
                                   icon::fromImage(8, other), icon::fromImage(7, other)}) ==
                expected.file());
    }

    void addressesOfOtherLibrariesAreForgotten()
    {
        // As read from a library of more than 32 MiB.
        IconRecord record = icon::fromImage(1, plain(300, 1, Qt::green));
        record.entry = QByteArray::fromHex("2C014F FFFFFF 07E0");
        const auto file = icoLibrary::write({record});
        QCOMPARE(file->mid(8, 8).toHex(), QByteArray("2c0140020000") + "07e0");
    }

    void addressesReachBeyondTheirLowBytes()
    {
        // 17 of the largest icons are more than 32 MiB.
        QVector<IconRecord> records = largestIcons(17);
        const auto file = icoLibrary::write(records);
        const int address = 0x20000 + 16 * 1023 * 1023;
        QCOMPARE(file->mid(8 * 16 + 2, 4).toHex(), QByteArray::number(address | 0xF0000000, 16));
        QVERIFY(icoLibrary::read(*file, records));
        QCOMPARE(records.at(16).offset, 2 * address);
        QVERIFY(!icoLibrary::write(largestIcons(258))); // beyond all addresses
    }

    void positionsOutsideTheIndexAreLeftOut()
    {
        const QImage image = plain(1, 1, Qt::red);
        QVERIFY(icoLibrary::write({icon::fromImage(-1, image), icon::fromImage(32768, image),
                                   icon::fromImage(1 << 30, image)}) ==
                QByteArray(indexBytes, '\0'));
    }

    void filesShorterThanTheIndexChangeNothing()
    {
        QVector<IconRecord> records = largestIcons(1);
        QVERIFY(!icoLibrary::read({}, records));
        QVERIFY(!icoLibrary::read(QByteArray(indexBytes - 1, '\0'), records));
        QCOMPARE(records.size(), 1);
        QVERIFY(icoLibrary::read(QByteArray(indexBytes, '\0'), records));
        QCOMPARE(records.size(), 0);
    }

    void iconsMayOverlap()
    {
        // All positions share the largest icon: their pixels are not copied.
        const QByteArray pixels = randomBytes(2 * 1023 * 1023);
        QByteArray file;
        for (int position = 0; position < 32768; ++position)
            file += QByteArray::fromHex("FFFFF0020000ABCD");
        file += pixels;
        QVector<IconRecord> records;
        QVERIFY(icoLibrary::read(file, records));
        QCOMPARE(records.size(), 32768);
        QVERIFY(records.at(32767).pixels() == pixels);
        QVERIFY(!icoLibrary::write(records));
    }

    void iconsLookAsTheyAreStored()
    {
        IconRecord record = icon::fromImage(0, plain(2, 2, QColor(0xFF, 0xFF, 0xFF)));
        record.entry =
            QByteArray::fromHex("02020000000012345678"); // its key colour is not looked at
        record.buffer = QByteArray::fromHex("F81F 07E0 1234 F81F");
        const QImage seen = icon::toImage(record, false);
        QCOMPARE(seen.format(), QImage::Format_RGB888);
        QCOMPARE(seen.pixel(0, 0), qRgb(0xF8, 0, 0xF8));
        QCOMPARE(seen.pixel(1, 0), qRgb(0, 0xFC, 0));
        QCOMPARE(seen.pixel(0, 1), qRgb(0x10, 0x44, 0xA0));
        const QImage filtered = icon::toImage(record, true);
        QCOMPARE(filtered.pixel(0, 0), qRgb(255, 255, 255));
        QCOMPARE(filtered.pixel(1, 1), qRgb(255, 255, 255));
        QCOMPARE(filtered.pixel(0, 1), seen.pixel(0, 1));
        QVERIFY(icon::toImage(IconRecord(), true).isNull());
    }
};

QTEST_GUILESS_MAIN(TestIcoLibrary)
#include "tst_ico_library.moc"
