#include "crc/crc_comparison.h"
#include "crc/file_crc.h"
#include "serial/modbus_crc16.h"
#include "support/module_bench.h"
#include "support/plain_crc.h"
#include "support/random_bytes.h"
#include "support/row.h"

#include <QBuffer>

namespace {

QString shownCrc(const QByteArray &bytes)
{
    const quint16 crc = plainCrc(bytes);
    return QString::number((crc & 0xFF) << 8 | crc >> 8, 16).toUpper();
}

/// A comparison with the simulated module.
struct Bench : ModuleBench
{
    /// Lists a file of block 3, which the module holds.
    void list(int bytes)
    {
        const QByteArray content = randomBytes(bytes);
        module.setFlash(3 * k7::Flash::blockBytes, content);
        comparison->setItems(crcCheck::unitsOf("3_a.bin", content).items);
    }
    void start(int times)
    {
        comparison->start();
        tick(times);
    }
    const CrcCheckItem &item(int index) const { return comparison->items().at(index); }
    QStringList results() const { return {item(0).compareResult, item(1).compareResult}; }

    CrcComparison *comparison = add<CrcComparison>(line);
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

    void filesAreCutIntoUnits()
    {
        const struct
        {
            const char *name;
            int bytes;
            QStringList units; // request, offset, bytes of each
        } rows[] = {
            {"5_font.bin", 0x41000, {"5a000540 0 262144", "5a000601 262144 4096"}},
            {"5_font.bin", 0x40800, {"5a000540 0 262144"}},
            {"7_a.ICO", 0x1FFF, {"5a000701 0 4096"}},
            {"7_a.iCo", 0x1000, {"5a000701 0 4096"}},
            {"7_a.bin", 0xFFF, {}},
            {"0255x.BIN", 0x42FFF, {"5a00ff40 0 262144", "5a000002 262144 8192"}},
            {"ZOLTOS.bin", 0, {"5a02f000 0 0"}},
            {"ZOLTOS_1.bin", 4096, {"5a020000 0 0"}},
            {"ZOLTOS_1.ICO", 5000, {"5a020388 4096 904"}},
            {"ZOLTOS.bin", 0x12345, {"5a021345 4096 70469"}},
            {"zoltos.bin", 5000, {}},
            {"0_ZOLT_ASC.bin", 5000, {}},
            {"a.bin", 5000, {}},
            {"5_a.jpg", 5000, {}},
            {"5_a", 5000, {}},
        };
        for (const auto &[name, bytes, units] : rows) {
            const Row row(name, bytes);
            const QByteArray content = randomBytes(bytes);
            const crcCheck::Units found = crcCheck::unitsOf(name, content);
            QVERIFY(!found.refusal);
            QCOMPARE(found.items.size(), units.size());
            for (int i = 0; i < units.size(); ++i) {
                const CrcCheckItem &item = found.items.at(i);
                const QStringList expected = units.at(i).split(' ');
                const QString suffix = item.request == 0x5A02 ? "" : QString("_%1").arg(i);
                QCOMPARE(item.name, name + suffix);
                QCOMPARE(QString::asprintf("%04x%04x", item.request, item.unit), expected.at(0));
                QCOMPARE(item.calculatedCrc,
                         shownCrc(content.mid(expected.at(1).toInt(), expected.at(2).toInt())));
                QCOMPARE(item.readCrc, QString("0000"));
                QCOMPARE(item.compareResult, QString("false"));
            }
        }
    }

    void brokenPicturesAreUnitsToo()
    {
        const crcCheck::Units broken = crcCheck::unitsOf("300_a.bmp", "no picture");
        QVERIFY(broken.refusal);
        QCOMPARE(broken.items.size(), 1);
        QCOMPARE(broken.items.at(0).unit, quint16{300});
        QCOMPARE(broken.items.at(0).calculatedCrc, QString("FFFF"));
    }

    void unitsAreAskedForAndCompared()
    {
        for (const auto &[rate, readTicks, compareTicks] :
             {std::tuple(9600, 42, 69), {115200, 5, 7}, {6250000, 2, 2}}) {
            const Row row(rate);
            Bench bench;
            bench.settings.baudRate = rate;
            bench.list(0x41000);
            const int unitTicks = 1 + readTicks + compareTicks;
            bench.start(2 * unitTicks - 1);
            QCOMPARE(bench.link.written,
                     (QVector<QByteArray>{QByteArray::fromHex("5AA50782 00E0 5A00 0340"),
                                          QByteArray::fromHex("5AA50483 00E0 02"),
                                          QByteArray::fromHex("5AA50782 00E0 5A00 0401"),
                                          QByteArray::fromHex("5AA50483 00E0 02")}));
            QCOMPARE(bench.writeTicks,
                     (QVector<int>{1, 1 + readTicks, 1 + unitTicks, 1 + unitTicks + readTicks}));
            QCOMPARE(bench.progress, (QVector<int>{0, 0, 50}));
            QCOMPARE(bench.outcomes.size(), 0);
            bench.notices.whileOpen = [&bench] {
                QCOMPARE(bench.session.commandType, commandType::idle);
                QCOMPARE(bench.outcomes.size(), 1);
                bench.tick(1000);
            };
            bench.tick(1);
            QCOMPARE(bench.notices.shown, QStringList{finished});
            QCOMPARE(bench.progress.last(), 100);
            QCOMPARE(bench.link.written.size(), 4);
            QVERIFY(!bench.link.isOpen());
            QCOMPARE(bench.results(), QStringList({"true", "true"}));
            // Results follow the last answer.
            bench.notices.whileOpen = nullptr;
            bench.module.setFlash(4 * k7::Flash::blockBytes + 17, "x");
            bench.start(2 * unitTicks);
            QCOMPARE(bench.results(), QStringList({"true", "false"}));
            QVERIFY(bench.item(0).isIntact());
            QVERIFY(!bench.item(1).isIntact());
        }
    }

    void picturesAndSystemFilesAreCompared()
    {
        Bench bench;
        QImage image(3, 1, QImage::Format_RGB32);
        image.setPixel(0, 0, qRgb(255, 0, 0));
        image.setPixel(1, 0, qRgb(0, 255, 0));
        image.setPixel(2, 0, qRgb(0, 0, 255));
        QBuffer bmp;
        image.save(&bmp, "BMP");
        const QByteArray system = randomBytes(4096 + 200);
        for (const auto &[link, hex] : {std::pair(k7::Link::Ed2, "5AA50680F55A010007"),
                                        {k7::Link::Ed2, "F80007E0001F"},
                                        {k7::Link::Uart2, "5AA5CB821000"}})
            bench.module.receive(link, QByteArray::fromHex(hex));
        bench.module.receive(k7::Link::Uart2, system.mid(4096));
        bench.comparison->setItems(crcCheck::unitsOf("7_a.Bmp", bmp.data()).items +
                                   crcCheck::unitsOf("ZOLTOS.bin", system).items);
        bench.start(100);
        QCOMPARE(bench.notices.shown, QStringList{finished});
        QVERIFY(bench.item(0).isIntact());
        QVERIFY(bench.item(1).isIntact());
    }

    void busyModulesAreAskedAgain()
    {
        Bench bench;
        bench.module.setBusyReads(3);
        bench.list(0x1000);
        bench.start(100);
        QCOMPARE(bench.notices.shown, QStringList{finished});
        // Found busy on the seventh tick after a read, and read again on the eighth.
        QCOMPARE(bench.writeTicks, (QVector<int>{1, 6, 14, 22, 30}));
        QVERIFY(bench.item(0).isIntact());
        // So are modules that fall silent behind their acknowledgement.
        bench.notices = {};
        bench.start(2);
        bench.answers = false;
        bench.tick(1000);
        QVERIFY(bench.link.written.size() > 100);
        QCOMPARE(bench.notices.shown, QStringList());
        bench.answers = true;
        bench.tick(40);
        QCOMPARE(bench.notices.shown, QStringList{finished});
    }

    void silentModulesEndTheComparison()
    {
        Bench bench;
        bench.list(0x41000);
        bench.start(13);
        bench.answers = false;
        bench.notices.whileOpen = [&bench] {
            QVERIFY(!bench.link.isOpen());
            QCOMPARE(bench.outcomes.size(), 1);
            bench.tick(100);
        };
        bench.tick(100);
        QCOMPARE(bench.notices.shown, QStringList{"Communication failure !"});
        QCOMPARE(bench.session.commandType, commandType::idle);
        // What was checked so far stays, and the next comparison begins anew.
        QVERIFY(bench.item(0).isIntact());
        bench.answers = true;
        bench.notices = {};
        bench.start(100);
        QCOMPARE(bench.notices.shown, QStringList{finished});
        QVERIFY(bench.item(1).isIntact());
    }

    void stoppedComparisonsBeginAnew()
    {
        Bench bench;
        bench.list(0x41000);
        bench.start(19); // in the middle of the second unit
        bench.session.commandType = commandType::idle;
        bench.tick(5);
        bench.link.written.clear();
        bench.start(1);
        QCOMPARE(bench.link.written.last(), QByteArray::fromHex("5AA50782 00E0 5A00 0340"));
        bench.link.canOpen = false;
        bench.link.close();
        bench.comparison->start();
        const int shown = bench.outcomes.size();
        bench.tick(50);
        QCOMPARE(bench.notices.shown, QStringList{"Serial opening failed !"});
        QCOMPARE(bench.outcomes.size(), shown + 1);
        QCOMPARE(bench.session.commandType, commandType::idle);
    }

    void newItemsEndTheComparison()
    {
        Bench bench;
        bench.list(0x41000);
        bench.start(8);
        bench.list(0x1000);
        QCOMPARE(bench.session.commandType, commandType::idle);
        bench.tick(100);
        QVERIFY(bench.notices.shown.isEmpty());
        QCOMPARE(bench.progress.last(), 0);
        QCOMPARE(bench.item(0).readCrc, QString("0000"));
        // Another exchange is left alone.
        bench.session.start(commandType::readVp);
        bench.list(0x2000);
        bench.comparison->setItems({});
        bench.start(0);
        QCOMPARE(bench.session.commandType, commandType::readVp);
    }
};

QTEST_GUILESS_MAIN(TestCrcCheck)
#include "tst_crc_check.moc"
