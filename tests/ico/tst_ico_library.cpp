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

/// An index with one entry, and `bytes` bytes behind it.
QByteArray libraryWith(int position, const char *entry, int bytes)
{
    QByteArray file(indexBytes + bytes, '\x11');
    file.replace(0, indexBytes, QByteArray(indexBytes, '\0'));
    return file.replace(8 * position, 8, QByteArray::fromHex(entry));
}

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

    void emptyLibrariesAreTheIndexAlone()
    {
        QVERIFY(icoLibrary::write({}) == QByteArray(indexBytes, '\0'));
    }

    void entriesHoldTheSize_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<QByteArray>("entry");
        QTest::newRow("1 x 1") << 1 << 1 << QByteArray("010100000000f81f");
        QTest::newRow("255 x 256") << 255 << 256 << QByteArray("ff0010000000f81f");
        QTest::newRow("256 x 1") << 256 << 1 << QByteArray("000140000000f81f");
        QTest::newRow("1023 x 1023") << 1023 << 1023 << QByteArray("fffff0000000f81f");
        QTest::newRow("1024 x 1") << 1024 << 1 << QByteArray("ff01c0000000f81f");
        QTest::newRow("1 x 1024") << 1 << 1024 << QByteArray("01ff30000000f81f");
        QTest::newRow("2000 x 500") << 2000 << 500 << QByteArray("fff4d0000000f81f");
    }

    void entriesHoldTheSize()
    {
        QFETCH(const int, width);
        QFETCH(const int, height);
        const IconRecord record = icon::fromImage(5, plain(width, height, QColor(255, 0, 255)));
        QTEST(record.entry.toHex(), "entry");
        QCOMPARE(record.width, qMin(width, 1023));
        QCOMPARE(record.buffer.size(), 2 * record.width * record.height);
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
        QVector<IconRecord> records(17, icon::fromImage(0, plain(1023, 1023, Qt::red)));
        for (int i = 0; i < records.size(); ++i)
            records[i].position = i;
        const auto file = icoLibrary::write(records);
        const int address = 0x20000 + 16 * 1023 * 1023;
        QCOMPARE(file->mid(8 * 16 + 2, 4).toHex(), QByteArray::number(address | 0xF0000000, 16));
        QVector<IconRecord> read;
        QVERIFY(icoLibrary::read(*file, read));
        QCOMPARE(read.at(16).offset, 2 * address);
    }

    void positionsOutsideTheIndexAreLeftOut()
    {
        const QImage image = plain(1, 1, Qt::red);
        QVERIFY(icoLibrary::write({icon::fromImage(-1, image), icon::fromImage(32768, image),
                                   icon::fromImage(1 << 30, image)}) ==
                QByteArray(indexBytes, '\0'));
    }

    void librariesBeyondTheAddressesAreRefused()
    {
        QVector<IconRecord> records(258, icon::fromImage(0, plain(1023, 1023, Qt::red)));
        for (int i = 0; i < records.size(); ++i)
            records[i].position = i;
        QVERIFY(!icoLibrary::write(records));
    }

    void whatWasWrittenIsRead()
    {
        const auto file = icoLibrary::write({icon::fromImage(9, plain(1023, 2, Qt::red)),
                                             icon::fromImage(3, plain(40, 300, Qt::yellow))});
        QVector<IconRecord> read;
        QVERIFY(icoLibrary::read(*file, read));
        QCOMPARE(read.size(), 2);
        QCOMPARE(read.at(0).position, 3);
        QCOMPARE(QSize(read.at(0).width, read.at(0).height), QSize(40, 300));
        QCOMPARE(read.at(1).position, 9);
        QCOMPARE(QSize(read.at(1).width, read.at(1).height), QSize(1023, 2));
        const auto ascending = icoLibrary::write(read);
        QVector<IconRecord> again;
        QVERIFY(icoLibrary::read(*ascending, again));
        QVERIFY(icoLibrary::write(again) == ascending);
        QCOMPARE(again.at(1).pixels(), read.at(1).pixels());
    }

    void filesAreJudged_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<bool>("isValid");
        QTest::addColumn<int>("icons"); // 1 was there before
        QTest::newRow("nothing") << QByteArray() << false << 1;
        QTest::newRow("a byte short") << QByteArray(indexBytes - 1, '\0') << false << 1;
        QTest::newRow("index alone") << QByteArray(indexBytes, '\0') << true << 0;
        QTest::newRow("to the end") << libraryWith(5, "0202000200000000", 8) << true << 1;
        QTest::newRow("a byte too long") << libraryWith(5, "0202000200000000", 7) << false << 0;
        QTest::newRow("far outside") << libraryWith(5, "01010FFFFFFF0000", 8) << false << 0;
        QTest::newRow("in the index") << libraryWith(5, "0101000000000000", 0) << true << 1;
        QTest::newRow("no pixels") << libraryWith(5, "0001000200000000", 0) << true << 1;
        QTest::newRow("address and no size") << libraryWith(5, "0000010000000000", 0) << false << 0;
        QTest::newRow("low address only") << libraryWith(5, "000000FFFFFFFFFF", 0) << true << 0;
        QByteArray secondBad = libraryWith(5, "0101000200000000", 2);
        secondBad.replace(8 * 6, 8, QByteArray::fromHex("0101000200010000"));
        QTest::newRow("second too long") << secondBad << false << 1;
    }

    void filesAreJudged()
    {
        QFETCH(const QByteArray, file);
        QVector<IconRecord> records{icon::fromImage(1, plain(1, 1, Qt::red))};
        QTEST(icoLibrary::read(file, records), "isValid");
        QTEST(records.size(), "icons");
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
