#include "common/big_endian.h"
#include "common/picture.h"
#include "download/bmp_download.h"
#include "download/flash_download.h"
#include "download/jpeg_file.h"
#include "download/jpg_download.h"
#include "download/os_download.h"
#include "engine/system_reset.h"
#include "support/module_bench.h"
#include "support/random_bytes.h"
#include "support/row.h"

#include <QBuffer>

namespace {

const QString complete = "The download is complete !";
const QString failure = "Communication failure !";

/// The downloads over UART2 to the simulated module.
struct Bench : ModuleBench
{
    explicit Bench(int rate = 115200, bool crc = false, const StepPolicy &stepPolicy = windowPolicy)
        : ModuleBench(crc, stepPolicy)
    {
        settings.baudRate = rate;
        add<SystemReset>(line);
    }

    /// Runs until the exchange is over; false if it is not within `limit` ticks.
    bool finish(int limit = 10'000'000)
    {
        while (session.commandType != commandType::idle && limit-- > 0)
            tick(1);
        return session.commandType == commandType::idle;
    }
    QByteArray system(int bytes) const
    {
        QByteArray content;
        while (content.size() < bytes)
            bigEndian::appendWord(content,
                                  module.vp(static_cast<quint16>(0x1000 + content.size() / 2)));
        return content.left(bytes);
    }
    /// Plugs in the module that takes what is sent.
    void useLayout(k7::Layout layout)
    {
        k7::ModuleSettings settings = module.settings();
        settings.layout = layout;
        module.configure(settings);
    }
    void start(int type, const QByteArray &content)
    {
        useLayout(type == commandType::pagedBmpDownload ? k7::Layout::K7uid2
                  : isK7Uid1                            ? k7::Layout::K7uid1
                                                        : k7::Layout::K7uid3);
        if (type == commandType::bmpDownload)
            linearBmp->start(content, [] { return 0; });
        else if (type == commandType::pagedBmpDownload)
            pagedBmp->start(content, [this] { return page; });
        else if (type == commandType::jpgDownload)
            jpg->start(content, [this] { return display; });
        else
            flash->start(content, 3, [this] { return isK7Uid1; });
    }

    int page = 7;
    bool isK7Uid1 = true;
    JpgDownload::Display display{0, 100, 50};
    BmpDownload *linearBmp = add<BmpDownload>(line, BmpDownload::linear());
    BmpDownload *pagedBmp = add<BmpDownload>(line, BmpDownload::paged());
    JpgDownload *jpg = add<JpgDownload>(line);
    FlashDownload *flash = add<FlashDownload>(line);
    OsDownload *os = add<OsDownload>(line);
};

} // namespace

class TestUartDownloads : public QObject
{
    Q_OBJECT

private slots:
    void everyFileArrives()
    {
        // ICO and JPEG have dead ends above, tested on their own.
        for (const auto &[type, topRate, sizes] :
             {std::tuple(commandType::bmpDownload, 6250000, QVector<int>{2, 240, 242, 8190}),
              {commandType::pagedBmpDownload, 6250000, {2, 8190, 8192, 8194}},
              {commandType::jpgDownload, 460800, {2, 239, 240, 241, 65535}},
              {commandType::icoDownload, 460800, {1, 127, 128, 129, 32767, 32768, 32769, 300000}}})
            for (const int rate : {9600, 115200, topRate})
                for (const int bytes : sizes)
                    arrives(type, rate, bytes);
    }

    void osFilesArrive()
    {
        for (const auto &[bytes, frameBytes, crc] :
             {std::tuple(1, 8, false),
              {250, 256, false},
              {251, 256 + 8, false},
              {95904, 383 * 256 + 160, false},
              {122880, 491 * 256 + 136, false}, // all the memory
              {251, 258 + 10, true}})
            for (const int rate : {9600, 115200, 6250000}) {
                const Row row(bytes, crc, rate);
                Bench bench(rate, crc);
                const QByteArray data = randomBytes(bytes);
                bench.os->load(QByteArray(4096, '\x11') + data);
                bench.os->start();
                bench.notices.whileOpen = [&bench] {
                    QCOMPARE(bench.session.commandType, commandType::osDownload);
                    QVERIFY(bench.link.isOpen());
                    bench.answers = false;
                };
                QVERIFY(bench.finish());
                QCOMPARE(bench.notices.shown, QStringList{complete});
                QVERIFY(!bench.session.replyReceived);
                // The announcement, the file in one piece, and then the two frames of the reset.
                QCOMPARE(bench.link.written.size(), 4);
                QCOMPARE(bench.link.written.at(0).mid(3, 4).toHex(), QByteArray("8f0000a0"));
                QCOMPARE(bench.link.written.at(1).size(), frameBytes);
                QVERIFY(bench.system(bytes) == data);
                QCOMPARE(bench.module.restarts(), 1);
                QCOMPARE(bench.module.vp(6), quint16{0});
                QCOMPARE(bench.builder.vpAt(6), quint16{0x5A10});
                QCOMPARE(bench.builder.vpAt(7), quint16{0x1000});
                // The reset is announced on the tick after the verdict, and waits for itself.
                const int sent = 1 + 1664000 / rate + 2;
                const int announced = sent + (frameBytes + 468) * 13000 / rate + 2 + 1;
                QCOMPARE(bench.writeTicks, (QVector<int>{1, sent, announced, announced + 71}));
            }
    }

    void chunksKeepTheirTicks()
    {
        const int linear = commandType::bmpDownload;
        const int paged = commandType::pagedBmpDownload;
        const int jpg = commandType::jpgDownload;
        using Ticks = QVector<int>;
        for (const auto &[type, rate, bytes, checkTick, writeTicks, endTick] :
             // Chunk and move command of two chunks.
             {std::tuple(linear, 9600, 480, 335, Ticks{1, 335, 355, 689}, 708),
              {linear, 115200, 480, 29, {1, 29, 32, 60}, 62},
              {linear, 6250000, 480, 2, {1, 2, 3, 4}, 4},
              {paged, 9600, 8194, 11442, {1, 11442, 11461, 22902}, 22920},
              {paged, 6250000, 8194, 19, {1, 19, 20, 38}, 38},
              // Two chunks, then the display command on the tick that ends the last.
              {jpg, 115200, 300, 28, {1, 30, 58}, 60},
              {jpg, 460800, 300, 7, {1, 9, 16}, 17}}) {
            const Row row(type, rate);
            Bench bench(rate);
            bench.answers = false;
            bench.notices.whileOpen = [&bench] {
                QVERIFY(!bench.link.isOpen());
                bench.tick(5000);
            };
            bench.start(type, randomBytes(bytes));
            bench.tick(checkTick - 1);
            QCOMPARE(bench.notices.shown, QStringList());
            bench.tick(1);
            QCOMPARE(bench.notices.shown, QStringList{failure});
            QCOMPARE(bench.session.commandType, commandType::idle);
            QCOMPARE(bench.writeTicks, Ticks{1});
            // The next download begins with the first chunk.
            bench.answers = true;
            bench.notices = {};
            bench.writeTicks.clear();
            bench.ticks = 0;
            bench.start(type, randomBytes(bytes));
            QVERIFY(bench.finish());
            QCOMPARE(bench.link.written.at(1), bench.link.written.at(0));
            QCOMPARE(bench.writeTicks, writeTicks);
            QCOMPARE(bench.ticks, endTick);
            QCOMPARE(bench.notices.shown, QStringList{complete});
        }
    }

    void highRatesHaveTheirDeadEnds()
    {
        // The tick that sends the display command is the one that would complete.
        Bench jpg(921600);
        jpg.start(commandType::jpgDownload, randomBytes(300));
        QVERIFY(!jpg.finish(100000));
        QCOMPARE(jpg.link.written.size(), 3);
        QVERIFY(jpg.notices.shown.isEmpty());
        // The acknowledgement would be tested on the tick that sends.
        Bench ico(6250000);
        ico.start(commandType::icoDownload, randomBytes(300));
        QVERIFY(!ico.finish(100000));
        QCOMPARE(ico.link.written.size(), 1);
        ico.start(commandType::bmpDownload, randomBytes(300));
        QVERIFY(ico.finish());
    }

    void pictureMemoryCountsBeyondSixteenBits()
    {
        Bench bench(6250000);
        const QByteArray pixels = randomBytes(547 * 240 + 2);
        bench.start(commandType::bmpDownload, pixels);
        bench.tick(2 * 547);
        QCOMPARE(bench.link.written.last(),
                 QByteArray::fromHex("5AA50B82 00A2 5A80 0000 7800 FFF0"));
        QVERIFY(bench.finish());
        QCOMPARE(bench.link.written.last(),
                 QByteArray::fromHex("5AA50B82 00A2 5A80 0000 7801 0068"));
        QVERIFY(bench.module.pictureMemory() == pixels);
    }

    void onlyPagedChunksAreFilledWithZeros()
    {
        Bench bench;
        bench.start(commandType::pagedBmpDownload, QByteArray(8194, '\x55'));
        bench.tick(960);
        QCOMPARE(bench.link.written.last().size(), 64 * (6 + 128));
        bench.page = 0x1234; // read when a chunk is moved
        QVERIFY(bench.finish());
        QCOMPARE(bench.link.written.last(),
                 QByteArray::fromHex("5AA50B82 00A2 5AA5 8000 1234 0001"));
        QCOMPARE(bench.module.pictures().value(0x1234).mid(8192),
                 QByteArray(2, '\x55') + QByteArray(8190, '\0'));
        bench.start(commandType::bmpDownload, QByteArray(242, '\x55'));
        bench.tick(40);
        QCOMPARE(bench.link.written.last(), QByteArray::fromHex("5AA505828000 5555"));
    }

    void displayIsReadAfterTheLastChunk()
    {
        Bench bench;
        bench.start(commandType::jpgDownload, QByteArray(241, '\x55'));
        bench.tick(40);
        bench.display = {1, 0x1234, 0};
        QVERIFY(bench.finish());
        QCOMPARE(bench.link.written.at(1), QByteArray::fromHex("5AA503828078")); // the odd byte
        QCOMPARE(bench.link.written.last(),
                 QByteArray::fromHex("5AA50B82 00A6 5A02 8000 1234 0000"));
        bench.display = {0, 800, 480};
        bench.start(commandType::jpgDownload, randomBytes(300));
        QVERIFY(bench.finish());
        QCOMPARE(bench.link.written.last(),
                 QByteArray::fromHex("5AA50B82 00A6 5A01 8000 0320 01E0"));
    }

    void flashUnitsAreCountedInBothLayouts()
    {
        for (const auto &[isK7Uid1, first, sixth, ninth] :
             {std::tuple(true, "5a0200188000000100000000", "5a02001d8000000100000000",
                         "5a0200208000000100000000"),
              {false, "5a0203000000800040000000", "5a0203014000800040000000",
               "5a0204000000800040000000"}}) {
            Bench bench;
            bench.isK7Uid1 = isK7Uid1;
            const QByteArray content = randomBytes(9 * 32768 - 5);
            bench.start(commandType::icoDownload, content);
            QVERIFY(bench.finish());
            QVector<QByteArray> moves;
            for (const QByteArray &frame : qAsConst(bench.link.written))
                if (frame.mid(4, 2) == QByteArray::fromHex("00AA"))
                    moves.append(frame.mid(6).toHex());
            QCOMPARE(moves.size(), 9);
            QCOMPARE(moves.at(0), QByteArray(first));
            QCOMPARE(moves.at(5), QByteArray(sixth));
            QCOMPARE(moves.at(8), QByteArray(ninth));
            QVERIFY(bench.module.flash().read(3 * k7::Flash::blockBytes, content.size() - 1) ==
                    content.left(content.size() - 1));
        }
    }

    void endTickOutlivesADownload()
    {
        Bench bench;
        bench.answers = false;
        bench.start(commandType::icoDownload, "a");
        bench.tick(15);
        QCOMPARE(bench.notices.shown, QStringList());
        bench.tick(1);
        QCOMPARE(bench.notices.shown, QStringList{failure});
        bench.answers = true;
        bench.notices = {};
        bench.link.written.clear();
        bench.start(commandType::icoDownload, "a");
        bench.tick(19);
        QCOMPARE(bench.link.written, QVector<QByteArray>{QByteArray::fromHex("5AA503828000")});
        bench.tick(254 * 19 + 5);
        QCOMPARE(bench.link.written.size(), 256);
        bench.tick(93);
        QCOMPARE(bench.link.written.size(), 257);
        QVERIFY(bench.notices.shown.isEmpty());
        bench.tick(1);
        QCOMPARE(bench.notices.shown, QStringList{complete});
        // At a rate where only the end tick counts, the last one of 99 repeats the first chunk for
        // ever.
        bench.settings.baudRate = 6250000;
        bench.start(commandType::icoDownload, "a");
        bench.tick(100);
        QCOMPARE(bench.link.written.size(), 259);
        QCOMPARE(bench.link.written.at(258), bench.link.written.at(257));
    }

    void osFramesKeepTheSettingsOfTheirTime()
    {
        Bench bench;
        QVERIFY(bench.os->isEmpty());
        bench.os->load(QByteArray(4096, 0));
        QVERIFY(bench.os->isEmpty());
        bench.os->load(QByteArray(4096, 0) + "a");
        bench.builder.setHeader(0x11, 0x22, true);
        bench.os->start();
        bench.tick(100);
        QCOMPARE(bench.link.written.at(1), QByteArray::fromHex("5AA505821000 6100"));
    }

    void osStageSurvivesItsReplacement()
    {
        Bench bench;
        bench.os->load(QByteArray(4096, 0) + "ab");
        bench.os->start();
        bench.tick(20); // announced and sent
        QCOMPARE(bench.link.written.size(), 2);
        bench.start(commandType::bmpDownload, randomBytes(2));
        QVERIFY(bench.finish());
        const int written = bench.link.written.size();
        bench.notices = {};
        // Nothing is sent again; the acknowledgements of the first time are gone.
        bench.os->start();
        QVERIFY(bench.finish());
        QCOMPARE(bench.notices.shown, QStringList{"Download failed !"});
        QCOMPARE(bench.link.written.size(), written);
        // A file that is loaded meanwhile waits for the next download.
        bench.os->start();
        bench.tick(1);
        bench.os->load(QByteArray(4096, 0) + "cd");
        QVERIFY(bench.finish());
        QCOMPARE(bench.link.written.at(written + 1), QByteArray::fromHex("5AA505821000 6162"));
        QCOMPARE(bench.module.restarts(), 1);
    }

    void osVerdictComesBeforeItsFields()
    {
        for (const bool answers : {true, false}) {
            const Row row(answers);
            Bench bench;
            bench.answers = answers;
            bench.session.replyReceived = true; // of an earlier exchange
            bench.os->load(QByteArray(4096, 0) + "ab");
            bench.os->start();
            // Ticks go on while a box is open, and each opens one more. Each that is closed starts
            // a reset.
            bench.notices.whileOpen = [&bench] { bench.tick(100); };
            QVERIFY(bench.finish());
            const QString verdict = answers ? complete : "Download failed !";
            QCOMPARE(bench.notices.shown, QStringList({verdict, verdict, verdict, verdict}));
            QCOMPARE(bench.module.restarts(), answers ? 4 : 0);
            // The next one begins with the announcement.
            bench.link.written.clear();
            bench.os->start();
            bench.tick(1);
            QCOMPARE(bench.link.written,
                     QVector<QByteArray>{QByteArray::fromHex("5AA5048F0000A0")});
        }
    }

    void largeJpegsAreCompressedUntilTheyFit()
    {
        QImage noise(80, 60, QImage::Format_RGB32);
        const QByteArray bytes = randomBytes(static_cast<int>(noise.sizeInBytes()));
        std::copy(bytes.begin(), bytes.end(), noise.bits());
        const auto encoded = [](const QImage &image, int quality) {
            QBuffer jpeg;
            image.save(&jpeg, "JPG", quality);
            return jpeg.data();
        };
        const QByteArray original = encoded(noise, 100);
        for (const int quality : {90, 81, 72, 65, 59, 53, 47, 43, 38, 34, 31, 28, 25, 22, 20}) {
            const QByteArray expected = encoded(picture::decode(original), quality);
            QVERIFY(expected.size() < original.size());
            QCOMPARE(jpegWithin(original, expected.size()).bytes, expected);
        }
        QCOMPARE(jpegWithin("as it is", 8).bytes, QByteArray("as it is"));
        QCOMPARE(jpegWithin("no picture", 8).refusal, &texts::fileIsNotPicture);
        QCOMPARE(jpegWithin(original, 100).refusal, &texts::jpegTooLarge);
    }

    void strictDownloadsAwaitEachAcknowledgementAndSettleFirst()
    {
        for (const int type :
             {commandType::bmpDownload, commandType::jpgDownload, commandType::icoDownload}) {
            const Row row(type);
            Bench bench(115200, false, {});
            bench.start(type, randomBytes(1000));
            bench.tick(20);
            bench.answers = false; // from the second chunk on
            QVERIFY(bench.finish());
            QCOMPARE(bench.notices.shown, QStringList{failure});
        }
    }

    void systemThatIsSentAgainIsJudgedByWhatWasLoadedLast()
    {
        Bench bench;
        bench.os->load(QByteArray(4096 + 5000, 0));
        bench.os->start();
        bench.tick(20);
        QCOMPARE(bench.link.written.size(), 2);
        bench.os->load(QByteArray(4096 + 100, 0));
        bench.os->start();
        // (106 + 468) * 13 bits take 64 ticks, of which 3 had passed; more than one behind that.
        bench.tick(64 - 3 + 1);
        QCOMPARE(bench.notices.shown, QStringList());
        bench.tick(1);
        QCOMPARE(bench.notices.shown, QStringList{complete});
    }

    void strictDownloadsSendAgainWhatIsNotAnswered()
    {
        for (const int rate : {115200, 6250000})
            for (const int type : {commandType::bmpDownload, commandType::pagedBmpDownload,
                                   commandType::jpgDownload, commandType::icoDownload}) {
                const Row row(type, rate);
                Bench bench(rate, true, {});
                int lost = 0;
                bench.drops = [&lost](int reply) { return reply % 13 == 3 && ++lost > 0; };
                const QByteArray content = randomBytes(9000);
                bench.start(type, content);
                QVERIFY(bench.finish());
                QCOMPARE(bench.notices.shown, QStringList{complete});
                QVERIFY(lost > 2);
                QVERIFY(arrived(bench, type, 9000) == content);
            }
        // A system is not restarted before somebody has checked it.
        Bench bench(115200, false, {});
        bench.drops = [](int reply) { return reply == 2; };
        const QByteArray data = randomBytes(5000);
        bench.os->load(QByteArray(4096, 0) + data);
        bench.os->start();
        QVERIFY(bench.finish());
        QCOMPARE(bench.notices.shown, QStringList{complete});
        QVERIFY(bench.system(5000) == data);
        QCOMPARE(bench.module.restarts(), 0);
        bench.drops = [](int) { return true; };
        bench.os->start();
        QVERIFY(bench.finish());
        QCOMPARE(bench.notices.shown.last(), failure);
        QCOMPARE(bench.link.written.last(), QByteArray::fromHex("5AA5048F0000A0"));
    }

private:
    static QByteArray arrived(const Bench &bench, int type, int bytes)
    {
        const QByteArray all = type == commandType::bmpDownload ? bench.module.pictureMemory()
                               : type == commandType::pagedBmpDownload
                                   ? bench.module.pictures().value(7)
                               : type == commandType::jpgDownload
                                   ? bench.module.jpeg().content
                                   : bench.module.flash().read(3 * k7::Flash::blockBytes, bytes);
        return all.left(bytes);
    }

    static void arrives(int type, int rate, int bytes)
    {
        const bool crc = bytes % 2 != rate / 9600 % 2;
        const Row row(type, rate, bytes, crc);
        Bench bench(rate, crc);
        const QByteArray content = randomBytes(bytes);
        bench.session.replyReceived = true; // of an earlier exchange
        bench.start(type, content);
        QVERIFY(!bench.session.replyReceived);
        QCOMPARE(bench.progress.last(), 0);
        bench.tick(1);
        bench.answers = false; // only the first acknowledgement is awaited
        QVERIFY(bench.finish());
        QCOMPARE(bench.notices.shown, QStringList{complete});
        QCOMPARE(bench.progress.last(), 100);
        QVERIFY(!bench.link.isOpen());
        QVERIFY(!bench.session.replyReceived);

        const int even = bytes - bytes % 2; // an odd last byte falls away
        QVERIFY(arrived(bench, type, even) == content.left(even));
        if (type == commandType::icoDownload) {
            // Whole units of 32 KiB go into the flash, zeros behind the file's last chunk.
            const int end = (bytes + 127) / 128 * 128;
            const int whole = (bytes + 32767) / 32768 * 32768;
            const QByteArray rest =
                bench.module.flash().read(3 * k7::Flash::blockBytes + end, whole - end + 1);
            QCOMPARE(rest, QByteArray(whole - end, '\0') + '\xFF');
        }
    }
};

QTEST_GUILESS_MAIN(TestUartDownloads)
#include "tst_uart_downloads.moc"
