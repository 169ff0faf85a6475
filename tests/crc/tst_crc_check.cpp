#include "crc/crc_comparison.h"
#include "crc/file_crc.h"
#include "serial/modbus_crc16.h"
#include "support/module_bench.h"
#include "support/random_bytes.h"

#include <QBuffer>
#include <QtTest>

namespace {

/// The CRC bit by bit, as it is defined.
quint16 plainCrc(const QByteArray &bytes)
{
    unsigned crc = 0xFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? crc >> 1 ^ 0xA001U : crc >> 1;
    }
    return static_cast<quint16>(crc);
}

QString shownCrc(const QByteArray &bytes)
{
    const quint16 crc = plainCrc(bytes);
    return QString::number((crc & 0xFF) << 8 | crc >> 8, 16).toUpper();
}

QByteArray bmpOf(const QImage &image)
{
    QByteArray bmp;
    QBuffer buffer(&bmp);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "BMP");
    return bmp;
}

/// A comparison with the simulated module.
struct Bench : ModuleBench
{
    Bench()
    {
        auto owned = std::make_unique<CrcComparison>(
            session, link, notices, builder,
            CrcComparison::Window{[this] { return rate; },
                                  [this](int percent) { progress.append(percent); },
                                  [this] { ++shown; }});
        comparison = owned.get();
        dispatch.add(commandType::crcComparison, std::move(owned));
    }

    void listFlashFile(const QByteArray &content)
    {
        module.setFlash(3 * k7::Flash::blockBytes, content);
        comparison->setItems(crcCheck::unitsOf("3_a.bin", content).items);
    }

    int rate = 115200;
    int shown = 0;
    QVector<int> progress;
    CrcComparison *comparison = nullptr;
};

const QString finished = "Check finish !";

} // namespace

class TestCrcCheck : public QObject
{
    Q_OBJECT

private slots:
    void crcIsTheOneOfTheFrames()
    {
        QCOMPARE(fileCrc("123456789"), quint16{0x4B37});
        QCOMPARE(crcCheck::crcText(crcCheck::swapped(0x4B37)), QString("374B"));
        QCOMPARE(crcCheck::crcText(0x0ABC), QString("ABC"));
        QCOMPARE(crcCheck::crcText(0), QString("0"));
        for (int bytes = 0; bytes <= 64; ++bytes) {
            const QByteArray content = randomBytes(bytes);
            QCOMPARE(fileCrc(content), plainCrc(content));
            QCOMPARE(fileCrc(content), ModbusCrc16::of(content));
            QCOMPARE(fileCrc(QByteArray(bytes, '\xFF')), plainCrc(QByteArray(bytes, '\xFF')));
        }
        const QByteArray large = randomBytes(1'000'003);
        QCOMPARE(fileCrc(large), plainCrc(large));
    }

    void filesAreCutIntoUnits_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("bytes");
        QTest::addColumn<QStringList>("units"); // name, request, offset, bytes of each
        const auto row = [](const char *name, int bytes, const QStringList &units) {
            QTest::addRow("%s, %d bytes", name, bytes) << QString(name) << bytes << units;
        };
        row("3_a.bin", 0x40000, {"3_a.bin_0 5a000340 0 262144"});
        row("5_font.bin", 0x41000,
            {"5_font.bin_0 5a000540 0 262144", "5_font.bin_1 5a000601 262144 4096"});
        row("5_font.bin", 0x40800, {"5_font.bin_0 5a000540 0 262144"});
        row("7_a.ICO", 0x1FFF, {"7_a.ICO_0 5a000701 0 4096"});
        row("7_a.iCo", 0x1000, {"7_a.iCo_0 5a000701 0 4096"});
        row("7_a.bin", 0xFFF, {});
        row("7_a.bin", 0, {});
        row("0255x.BIN", 0x42FFF,
            {"0255x.BIN_0 5a00ff40 0 262144", "0255x.BIN_1 5a000002 262144 8192"});
        row("ZOLTOS.bin", 0, {"ZOLTOS.bin 5a02f000 0 0"});
        row("ZOLTOS_1.bin", 4096, {"ZOLTOS_1.bin 5a020000 0 0"});
        row("ZOLTOS_1.ICO", 5000, {"ZOLTOS_1.ICO 5a020388 4096 904"});
        row("ZOLTOS.bin", 0x12345, {"ZOLTOS.bin 5a021345 4096 70469"});
        row("zoltos.bin", 5000, {});
        row("0_ZOLT_ASC.bin", 5000, {});
        row("a.bin", 5000, {});
        row("5_a.jpg", 5000, {});
        row("5_a", 5000, {});
        row("99999999999.bin", 5000, {});
    }

    void filesAreCutIntoUnits()
    {
        QFETCH(const QString, name);
        QFETCH(const int, bytes);
        QFETCH(const QStringList, units);
        const QByteArray content = randomBytes(bytes);
        const crcCheck::Units found = crcCheck::unitsOf(name, content);
        QVERIFY(!found.refusal);
        QCOMPARE(found.items.size(), units.size());
        for (int i = 0; i < units.size(); ++i) {
            const CrcCheckItem &item = found.items.at(i);
            const QStringList expected = units.at(i).split(' ');
            QCOMPARE(item.name, expected.at(0));
            QCOMPARE(QString::asprintf("%04x%04x", item.request, item.unit), expected.at(1));
            QCOMPARE(item.calculatedCrc,
                     shownCrc(content.mid(expected.at(2).toInt(), expected.at(3).toInt())));
            QCOMPARE(item.readCrc, QString("0000"));
            QCOMPARE(item.compareResult, QString("false"));
        }
    }

    void picturesAreCheckedByTheirPixels()
    {
        QImage image(3, 1, QImage::Format_RGB32);
        image.setPixel(0, 0, qRgb(255, 0, 0));
        image.setPixel(1, 0, qRgb(0, 255, 0));
        image.setPixel(2, 0, qRgb(0, 0, 255));
        const crcCheck::Units units = crcCheck::unitsOf("300_a.Bmp", bmpOf(image));
        QCOMPARE(units.items.size(), 1);
        QCOMPARE(units.items.at(0).request, quint16{0x5A01});
        QCOMPARE(units.items.at(0).unit, quint16{300});
        QCOMPARE(units.items.at(0).calculatedCrc, shownCrc(QByteArray::fromHex("F80007E0001F")));
        const crcCheck::Units broken = crcCheck::unitsOf("a.bmp", "no picture");
        QVERIFY(broken.refusal);
        QCOMPARE(broken.items.at(0).unit, quint16{0});
        QCOMPARE(broken.items.at(0).calculatedCrc, QString("FFFF"));
    }

    void unitsAreAskedForAndCompared_data()
    {
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("readTicks");
        QTest::addColumn<int>("compareTicks");
        QTest::newRow("9600") << 9600 << 42 << 69;
        QTest::newRow("115200") << 115200 << 5 << 7;
        QTest::newRow("6250000") << 6250000 << 2 << 2;
    }

    void unitsAreAskedForAndCompared()
    {
        QFETCH(const int, rate);
        QFETCH(const int, readTicks);
        QFETCH(const int, compareTicks);
        Bench bench;
        bench.rate = rate;
        bench.listFlashFile(randomBytes(0x41000));
        bench.comparison->start();
        const int unitTicks = 1 + readTicks + compareTicks;
        bench.tick(unitTicks);
        QCOMPARE(bench.link.written,
                 (QVector<QByteArray>{QByteArray::fromHex("5AA50782 00E0 5A00 0340"),
                                      QByteArray::fromHex("5AA50483 00E0 02")}));
        QCOMPARE(bench.writeTicks, (QVector<int>{1, 1 + readTicks}));
        QCOMPARE(bench.progress, (QVector<int>{0, 0, 50}));
        QCOMPARE(bench.shown, 0);
        bench.notices.whileOpen = [&bench] {
            QCOMPARE(bench.session.commandType, commandType::idle);
            QCOMPARE(bench.shown, 1);
            bench.tick(1000);
        };
        bench.tick(unitTicks);
        QCOMPARE(bench.notices.shown, QStringList{finished});
        QCOMPARE(bench.progress.last(), 100);
        QCOMPARE(bench.link.written.size(), 4);
        QVERIFY(!bench.link.isOpen());
        for (const CrcCheckItem &item : bench.comparison->items()) {
            QVERIFY(item.isIntact());
            QCOMPARE(item.compareResult, QString("true"));
        }
    }

    void unitsOfAllKindsAreCompared()
    {
        Bench bench;
        QImage image(20, 10, QImage::Format_RGB32);
        image.fill(Qt::green);
        bench.module.receive(k7::Link::Ed2, QByteArray::fromHex("5AA50680F55A010007"));
        QByteArray pixels;
        for (int i = 0; i < 200; ++i)
            pixels += QByteArray::fromHex("07E0");
        bench.module.receive(k7::Link::Ed2, pixels);
        const QByteArray system = randomBytes(4096 + 700);
        for (int i = 0; i < 350; ++i)
            bench.module.setVp(
                static_cast<quint16>(0x1000 + i),
                static_cast<quint16>(static_cast<quint8>(system.at(4096 + 2 * i)) << 8 |
                                     static_cast<quint8>(system.at(4097 + 2 * i))));
        bench.comparison->setItems(crcCheck::unitsOf("7_a.bmp", bmpOf(image)).items +
                                   crcCheck::unitsOf("ZOLTOS.bin", system).items);
        bench.comparison->start();
        bench.tick(100);
        QCOMPARE(bench.notices.shown, QStringList{finished});
        QVERIFY(bench.comparison->items().at(0).isIntact());
        QVERIFY(bench.comparison->items().at(1).isIntact());
    }

    void corruptedUnitsDiffer()
    {
        Bench bench;
        bench.listFlashFile(randomBytes(0x41000));
        bench.module.setFlash(4 * k7::Flash::blockBytes + 17, "x");
        bench.comparison->start();
        bench.tick(100);
        QCOMPARE(bench.notices.shown, QStringList{finished});
        QVERIFY(bench.comparison->items().at(0).isIntact());
        QVERIFY(!bench.comparison->items().at(1).isIntact());
        QCOMPARE(bench.comparison->items().at(1).compareResult, QString("false"));
        QVERIFY(bench.comparison->items().at(1).readCrc != "0000");
    }

    void resultsFollowTheLastAnswer()
    {
        Bench bench;
        bench.listFlashFile(randomBytes(0x1000));
        bench.comparison->start();
        bench.tick(50);
        bench.module.setFlash(3 * k7::Flash::blockBytes, "corrupted");
        bench.comparison->start();
        bench.tick(50);
        QVERIFY(!bench.comparison->items().at(0).isIntact());
        QCOMPARE(bench.comparison->items().at(0).compareResult, QString("false"));
    }

    void busyModulesAreAskedAgain()
    {
        Bench bench;
        bench.module.setBusyReads(3);
        bench.listFlashFile(randomBytes(0x1000));
        bench.comparison->start();
        bench.tick(100);
        QCOMPARE(bench.notices.shown, QStringList{finished});
        // Found busy on the seventh tick after a read, and read again on the eighth.
        QCOMPARE(bench.writeTicks, (QVector<int>{1, 6, 14, 22, 30}));
        QVERIFY(bench.comparison->items().at(0).isIntact());
    }

    void silentModulesEndTheComparison()
    {
        Bench bench;
        bench.listFlashFile(randomBytes(0x41000));
        bench.comparison->start();
        bench.tick(13);
        bench.answers = false;
        bench.notices.whileOpen = [&bench] {
            QVERIFY(!bench.link.isOpen());
            QCOMPARE(bench.shown, 1);
            bench.tick(100);
        };
        bench.tick(100);
        QCOMPARE(bench.notices.shown, QStringList{"Communication failure !"});
        QCOMPARE(bench.session.commandType, commandType::idle);
        // What was checked so far stays, and the next comparison begins anew.
        QVERIFY(bench.comparison->items().at(0).isIntact());
        bench.answers = true;
        bench.notices = {};
        bench.comparison->start();
        bench.tick(100);
        QCOMPARE(bench.notices.shown, QStringList{finished});
        QVERIFY(bench.comparison->items().at(1).isIntact());
    }

    void silenceBehindTheAcknowledgementIsPolled()
    {
        Bench bench;
        bench.listFlashFile(randomBytes(0x1000));
        bench.comparison->start();
        bench.tick(2);
        bench.answers = false;
        bench.tick(1000);
        QVERIFY(bench.link.written.size() > 100);
        QVERIFY(bench.notices.shown.isEmpty());
        bench.answers = true;
        bench.tick(20);
        QCOMPARE(bench.notices.shown, QStringList{finished});
    }

    void stoppedComparisonsBeginAnew()
    {
        Bench bench;
        bench.listFlashFile(randomBytes(0x41000));
        bench.comparison->start();
        bench.tick(19); // in the middle of the second unit
        bench.session.commandType = commandType::idle;
        bench.tick(5);
        bench.link.written.clear();
        bench.comparison->start();
        bench.tick(1);
        QCOMPARE(bench.link.written.last(), QByteArray::fromHex("5AA50782 00E0 5A00 0340"));
        bench.link.canOpen = false;
        bench.link.close();
        bench.comparison->start();
        const int shown = bench.shown;
        bench.tick(50);
        QCOMPARE(bench.notices.shown, QStringList{"Serial opening failed !"});
        QCOMPARE(bench.shown, shown + 1);
        QCOMPARE(bench.session.commandType, commandType::idle);
    }

    void newItemsEndTheComparison()
    {
        Bench bench;
        bench.listFlashFile(randomBytes(0x41000));
        bench.comparison->start();
        bench.tick(8);
        bench.listFlashFile(randomBytes(0x1000));
        QCOMPARE(bench.session.commandType, commandType::idle);
        bench.tick(100);
        QVERIFY(bench.notices.shown.isEmpty());
        QCOMPARE(bench.progress.last(), 0);
        QCOMPARE(bench.comparison->items().at(0).readCrc, QString("0000"));
        // Another exchange is left alone.
        bench.session.start(commandType::readVp);
        bench.listFlashFile(randomBytes(0x2000));
        QCOMPARE(bench.session.commandType, commandType::readVp);
    }

    void withoutItemsNothingHappens()
    {
        Bench bench;
        bench.comparison->start();
        QCOMPARE(bench.session.commandType, commandType::idle);
        QVERIFY(bench.progress.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestCrcCheck)
#include "tst_crc_check.moc"
