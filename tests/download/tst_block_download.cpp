#include "common/file_number.h"
#include "common/picture.h"
#include "download/block_download.h"
#include "support/row.h"
#include "support/step_bench.h"

#include <QBuffer>

namespace {

struct Bench : StepBench
{
    explicit Bench(const BlockDownload::Kind &kind, const StepPolicy &stepPolicy = windowPolicy)
        : StepBench(stepPolicy), download(add<BlockDownload>(line, kind))
    {
    }

    BlockDownload *download;
};

} // namespace

class TestBlockDownload : public QObject
{
    Q_OBJECT

private slots:
    void blocksGoOutOneAfterTheOther()
    {
        const struct
        {
            BlockDownload::Kind kind;
            QByteArray handshake;
            int check;
            int end;
        } rows[] = {{BlockDownload::fonts(), "5AA50480F35A", 100, 800},
                    {BlockDownload::pictures(), "5AA50680F55A0100", 300, 917}};
        for (const auto &[kind, hex, check, end] : rows) {
            const Row row(hex);
            const QByteArray handshake = QByteArray::fromHex(hex);
            Bench bench(kind);
            bench.session.replyReceived = true; // of an earlier exchange
            bench.download->start({{3, "first"}, {255, "second"}, {0, ""}}, end);
            QVERIFY(!bench.session.replyReceived);
            bench.tick(1);
            bench.session.replyReceived = true; // the only acknowledgement that is awaited
            bench.tick(3 * end - 2);
            QCOMPARE(bench.link.written,
                     (QVector<QByteArray>{handshake + '\x03', "first", handshake + '\xFF', "second",
                                          handshake + '\0', ""}));
            QCOMPARE(bench.writeTicks,
                     (QVector<int>{1, check, end + 1, end + check, 2 * end + 1, 2 * end + check}));
            QCOMPARE(bench.progress, (QVector<int>{0, 33, 66}));
            QCOMPARE(bench.notices.shown, QStringList());
            bench.notices.whileOpen = [&bench] {
                QCOMPARE(bench.session.commandType, commandType::idle);
                QVERIFY(!bench.link.isOpen());
                bench.tick(2000);
            };
            bench.tick(1);
            QCOMPARE(bench.notices.shown, QStringList{"The download is complete !"});
            QCOMPARE(bench.progress.last(), 100);
            QVERIFY(!bench.session.replyReceived);
            QCOMPARE(bench.link.written.size(), 6);
        }
    }

    void missingAcknowledgementEndsTheDownloadForGood()
    {
        Bench bench(BlockDownload::fonts());
        bench.notices.whileOpen = [&bench] { bench.tick(3000); };
        bench.download->start({{1, "a"}, {2, "b"}}, 800);
        bench.tick(3000);
        QCOMPARE(bench.notices.shown, QStringList{"Communication failure !"});
        QCOMPARE(bench.link.written.size(), 1);
        QVERIFY(!bench.link.isOpen());
        // The next one begins with the first block.
        bench.download->start({{7, "c"}}, 800);
        bench.tick(1);
        QVERIFY(bench.link.written.last().endsWith('\x07'));
    }

    void fileNumbersAreLeadingDigits()
    {
        const struct
        {
            const char *path;
            const char *digits;
            int number;
        } rows[] = {
            {"/a/13触控配置文件.bin", "13", 13},
            {"/a/0_ZOLT_ASC.HZK", "0", 0},
            {"007.bin", "007", 7},
            {"/12/font.dzk", "", 0},
            {"/7/0012", "", 12}, // nothing but digits
            {"３a.bin", "", 0},
            {"99999999999.bin", "99999999999", 0},
        };
        for (const auto &[path, digits, number] : rows) {
            QCOMPARE(leadingDigits(path), QString(digits));
            QCOMPARE(leadingNumber(path), number);
        }
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

    void picturesThatCannotBeDecodedAreRefused()
    {
        QBuffer png;
        QImage(20, 20, QImage::Format_RGB32).save(&png, "PNG");
        const QByteArray tooLarge = "P4 10001 10000\n" + QByteArray(1251 * 10000, '\0');
        for (const QByteArray &content :
             {QByteArray(), QByteArray("no picture"), png.data().left(40), tooLarge}) {
            const Row row(content.left(20));
            QVERIFY(picture::decode(content).isNull());
            QCOMPARE(&picture::refusal(content),
                     content == tooLarge ? &texts::pictureTooLarge : &texts::fileIsNotPicture);
        }
    }

    void whatWasAskedTwiceIsBelievedBehindASilence()
    {
        const QByteArray ok = QByteArray::fromHex("5AA503804F4B");
        Bench bench(BlockDownload::fonts(), {});
        bench.replies.setHeader(0x5A, 0xA5);
        bench.download->start({{1, "a"}}, 800);
        while (bench.link.written.size() < 2 && bench.ticks < 2000)
            bench.tick(1);
        bench.tick(100);
        bench.replies.receive(ok); // perhaps of the first question
        bench.tick(400);
        QCOMPARE(bench.link.written.size(), 2);
        bench.tick(200);
        QCOMPARE(bench.link.written.last(), QByteArray("a"));
    }

    void strictDownloadsAwaitEachAcknowledgement()
    {
        const QByteArray ok = QByteArray::fromHex("5AA503804F4B");
        Bench bench(BlockDownload::fonts(), {});
        bench.replies.setHeader(0x5A, 0xA5);
        bench.download->start({{1, "a"}, {2, "b"}}, 800);
        bench.tick(240);
        QCOMPARE(bench.link.written.size(), 1);
        bench.replies.receive(ok); // late
        bench.tick(1);
        QCOMPARE(bench.link.written.last(), QByteArray("a"));
        bench.link.waiting = 1; // a line that is slow
        bench.tick(5000);
        QCOMPARE(bench.link.written.size(), 2);
        bench.link.waiting = 0;
        bench.replies.receive(ok + ok); // to nothing that was asked
        bench.tick(701);
        QCOMPARE(bench.link.written.size(), 3);
        // The second block is asked for three times more, and then given up.
        bench.tick(4 * 1000);
        QCOMPARE(bench.link.written.size(), 6);
        QCOMPARE(bench.outcomes, QVector<Outcome>{Outcome::Failed});
    }
};

QTEST_GUILESS_MAIN(TestBlockDownload)
#include "tst_block_download.moc"
