#include "common/file_number.h"
#include "common/picture.h"
#include "download/block_download.h"
#include "download/step_dispatch.h"
#include "support/fake_link.h"
#include "support/recording_notices.h"

#include <QBuffer>
#include <QtTest>

namespace {

using Blocks = QVector<BlockDownload::Block>;

/// A download over a link without a device.
struct Bench
{
    explicit Bench(const BlockDownload::Kind &kind)
    {
        auto step = std::make_unique<BlockDownload>(
            session, link, notices, kind, [this](int percent) { progress.append(percent); });
        download = step.get();
        dispatch.add(kind.commandType, std::move(step));
    }

    void start(const QVector<BlockDownload::Block> &blocks) { download->start(blocks, endTick); }
    void tick(int times)
    {
        for (int i = 0; i < times; ++i)
            dispatch.tick();
    }

    DownloadSession session;
    FakeLink link;
    RecordingNotices notices;
    StepDispatch dispatch{session};
    int endTick = 800;
    QVector<int> progress;
    BlockDownload *download = nullptr;
};

const QString complete = "The download is complete !";
const QString failure = "Communication failure !";

} // namespace

class TestBlockDownload : public QObject
{
    Q_OBJECT

private slots:
    void blocksGoOutOneAfterTheOther_data()
    {
        QTest::addColumn<bool>("isPicture");
        QTest::addColumn<QByteArray>("handshake");
        QTest::addColumn<int>("checkTick");
        QTest::addColumn<int>("endTick");
        QTest::newRow("fonts") << false << QByteArray::fromHex("5AA50480F35A") << 100 << 800;
        QTest::newRow("pictures") << true << QByteArray::fromHex("5AA50680F55A0100") << 300 << 917;
    }

    void blocksGoOutOneAfterTheOther()
    {
        QFETCH(const bool, isPicture);
        QFETCH(const QByteArray, handshake);
        QFETCH(const int, checkTick);
        QFETCH(const int, endTick);
        Bench bench(isPicture ? BlockDownload::pictures() : BlockDownload::fonts());
        bench.endTick = endTick;
        bench.session.replyReceived = true; // of an earlier exchange
        bench.start({{3, "first"}, {255, "second"}, {0, ""}});
        QVERIFY(!bench.session.replyReceived);
        bench.tick(1);
        QCOMPARE(bench.link.written, QVector<QByteArray>{handshake + '\x03'});
        bench.session.replyReceived = true;
        bench.tick(checkTick - 2);
        QCOMPARE(bench.link.written.size(), 1);
        bench.tick(1);
        QCOMPARE(bench.link.written.last(), QByteArray("first"));
        bench.tick(endTick - checkTick);
        QCOMPARE(bench.progress.last(), 33);
        QCOMPARE(bench.link.written.size(), 2);
        bench.tick(1);
        QCOMPARE(bench.link.written.last(), handshake + '\xFF');
        bench.tick(endTick - 1);
        QCOMPARE(bench.link.written.last(), QByteArray("second"));
        bench.tick(endTick - 1);
        QCOMPARE(bench.link.written.last(), QByteArray());
        QVERIFY(bench.notices.shown.isEmpty());
        bench.notices.whileOpen = [&bench] {
            QCOMPARE(bench.session.commandType, commandType::idle);
            QVERIFY(!bench.link.isOpen());
            bench.tick(2000);
        };
        bench.tick(1);
        QCOMPARE(bench.notices.shown, QStringList{complete});
        QCOMPARE(bench.progress, (QVector<int>{0, 33, 66, 100}));
        QVERIFY(!bench.session.replyReceived);
        QCOMPARE(bench.link.written.size(), 6);
    }

    void onlyTheFirstAcknowledgementIsAwaited()
    {
        Bench bench(BlockDownload::fonts());
        bench.start({{1, "a"}, {2, "b"}});
        bench.tick(50);
        bench.session.replyReceived = true;
        bench.tick(1550);
        QCOMPARE(bench.notices.shown, QStringList{complete});
    }

    void missingAcknowledgementEndsTheDownloadForGood()
    {
        Bench bench(BlockDownload::fonts());
        bench.notices.whileOpen = [&bench] { bench.tick(3000); };
        bench.start({{1, "a"}, {2, "b"}});
        bench.tick(3000);
        QCOMPARE(bench.notices.shown, QStringList{failure});
        QCOMPARE(bench.link.written.size(), 1);
        QVERIFY(!bench.link.isOpen());
        // The next one begins with the first block.
        bench.notices.whileOpen = nullptr;
        bench.start({{7, "c"}});
        bench.tick(1);
        QVERIFY(bench.link.written.last().endsWith('\x07'));
    }

    void portThatCannotBeOpenedEndsTheDownload()
    {
        Bench bench(BlockDownload::pictures());
        bench.link.canOpen = false;
        bench.start({{1, "a"}});
        bench.tick(2000);
        QCOMPARE(bench.notices.shown, QStringList{"Serial opening failed !"});
        QVERIFY(bench.link.written.isEmpty());
    }

    void lostDeviceEndsLaterBlocksToo()
    {
        Bench bench(BlockDownload::fonts());
        bench.start({{1, "a"}, {2, "b"}});
        bench.tick(50);
        bench.session.replyReceived = true;
        bench.tick(800);
        bench.link.close();
        bench.dispatch.linkLost(bench.link);
        QCOMPARE(bench.session.commandType, commandType::idle);
        bench.tick(2000);
        QCOMPARE(bench.notices.shown, QStringList{failure});
    }

    void fileNumbersAreLeadingDigits_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("number");
        QTest::newRow("Chinese name") << "/a/13触控配置文件.bin"
                                      << "13";
        QTest::newRow("zero") << "/a/0_ZOLT_ASC.HZK"
                              << "0";
        QTest::newRow("leading zeros") << "007.bin"
                                       << "007";
        QTest::newRow("no digits") << "/12/font.dzk"
                                   << "";
        QTest::newRow("nothing but digits") << "/a/123"
                                            << "";
        QTest::newRow("other digits") << QString("３a.bin") << "";
    }

    void fileNumbersAreLeadingDigits()
    {
        QFETCH(const QString, path);
        QTEST(leadingDigits(path), "number");
    }

    void pixelsArePackedHighByteFirst()
    {
        QImage image(3, 2, QImage::Format_ARGB32);
        image.fill(Qt::black);
        image.setPixel(0, 0, qRgb(0xFF, 0, 0));
        image.setPixel(1, 0, qRgb(0, 0xFF, 0));
        image.setPixel(2, 0, qRgb(0, 0, 0xFF));
        image.setPixel(0, 1, qRgba(0x12, 0x34, 0x56, 0)); // wholly transparent
        const QByteArray expected = QByteArray::fromHex("F800 07E0 001F 11AA 0000 0000");
        QCOMPARE(picture::toRgb565(image).toHex(), expected.toHex());
        QCOMPARE(picture::toRgb565(QImage()), QByteArray());
        const QImage palette = image.convertToFormat(QImage::Format_Indexed8);
        QCOMPARE(picture::toRgb565(palette).left(6).toHex(), expected.left(6).toHex());
    }

    void picturesThatCannotBeDecodedAreRefused_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("no picture");
        QTest::newRow("too large") << QByteArray("P6 20000 20000 255\n");
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        QImage(20, 20, QImage::Format_RGB32).save(&buffer, "PNG");
        QTest::newRow("cut short") << png.left(40);
    }

    void picturesThatCannotBeDecodedAreRefused()
    {
        QFETCH(const QByteArray, content);
        QVERIFY(picture::decode(content).isNull());
        const bool isTooLarge = qstrcmp(QTest::currentDataTag(), "too large") == 0;
        QCOMPARE(&picture::refusal(content),
                 isTooLarge ? &texts::pictureTooLarge : &texts::fileIsNotPicture);
    }
};

QTEST_GUILESS_MAIN(TestBlockDownload)
#include "tst_block_download.moc"
