#include "common/big_endian.h"
#include "common/file_number.h"
#include "common/picture.h"
#include "download/bmp_download.h"
#include "download/ico_download.h"
#include "download/jpeg_file.h"
#include "download/jpg_download.h"
#include "download/os_download.h"
#include "download/system_reset.h"
#include "support/module_bench.h"
#include "support/random_bytes.h"

#include <QBuffer>
#include <QtTest>

namespace {

const QString complete = "The download is complete !";
const QString failure = "Communication failure !";

/// The downloads over UART2 to the simulated module.
struct Bench : ModuleBench
{
    explicit Bench(int lineRate = 115200, bool crc = false) : ModuleBench(crc), rate(lineRate)
    {
        const StagedDownload::Window window{[this] { return rate; },
                                            [this](int percent) { progress = percent; }};
        add(commandType::bmpDownload, linearBmp, window, BmpDownload::linear());
        add(commandType::pagedBmpDownload, pagedBmp, window,
            BmpDownload::paged([this] { return page; }));
        add(commandType::jpgDownload, jpg, window, [this] { return display; });
        add(commandType::icoDownload, ico, window, [this] { return isK7Uid1; });
        add(commandType::osDownload, os, window.rate);
        SystemReset *reset = nullptr;
        add(commandType::systemReset, reset);
    }

    template<typename StepClass, typename... Arguments>
    void add(int type, StepClass *&step, const Arguments &...arguments)
    {
        auto owned = std::make_unique<StepClass>(session, link, notices, builder, arguments...);
        step = owned.get();
        dispatch.add(type, std::move(owned));
    }

    /// Runs until the exchange is over; false if it is not within `limit` ticks.
    bool finish(int limit = 10'000'000)
    {
        while (session.commandType != commandType::idle && limit-- > 0)
            tick(1);
        return session.commandType == commandType::idle;
    }
    QByteArray moduleVp(int address, int bytes) const
    {
        QByteArray content;
        for (int i = 0; i < (bytes + 1) / 2; ++i)
            bigEndian::appendWord(content, module.vp(static_cast<quint16>(address + i)));
        return content.left(bytes);
    }
    quint16 moved(int word) const { return module.vp(static_cast<quint16>(0xA2 + word)); }
    void start(int type, const QByteArray &content)
    {
        if (type == commandType::bmpDownload)
            linearBmp->start(content);
        else if (type == commandType::pagedBmpDownload)
            pagedBmp->start(content);
        else if (type == commandType::jpgDownload)
            jpg->start(content);
        else
            ico->start(content, 3);
    }

    int rate;
    int page = 7;
    bool isK7Uid1 = true;
    JpgDownload::Display display{0, 100, 50};
    int progress = -1;
    BmpDownload *linearBmp = nullptr;
    BmpDownload *pagedBmp = nullptr;
    JpgDownload *jpg = nullptr;
    IcoDownload *ico = nullptr;
    OsDownload *os = nullptr;
};

constexpr int allTypes[] = {commandType::bmpDownload, commandType::pagedBmpDownload,
                            commandType::jpgDownload, commandType::icoDownload};

} // namespace

class TestUartDownloads : public QObject
{
    Q_OBJECT

private slots:
    void everyFileArrives_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("rate");
        QTest::addColumn<bool>("crc");
        QTest::addColumn<int>("bytes");
        const QMap<int, QVector<int>> sizes{
            {commandType::bmpDownload, {2, 240, 242, 8190}},
            {commandType::pagedBmpDownload, {2, 8190, 8192, 8194}},
            {commandType::jpgDownload, {2, 239, 240, 241, 65535}},
            {commandType::icoDownload, {1, 127, 128, 129, 32767, 32768, 32769, 300000}},
        };
        for (const int type : allTypes)
            for (const int rate : {9600, 115200, 460800, 6250000})
                for (const int bytes : sizes.value(type)) {
                    // Two kinds have dead ends at the highest rate, tested on their own.
                    const bool isDeadEnd = rate == 6250000 && (type == commandType::jpgDownload ||
                                                               type == commandType::icoDownload);
                    if (!isDeadEnd)
                        QTest::addRow("type %d, rate %d, %d bytes", type, rate, bytes)
                            << type << rate << (bytes % 2 != rate / 9600 % 2) << bytes;
                }
    }

    void everyFileArrives()
    {
        QFETCH(const int, type);
        QFETCH(const int, rate);
        QFETCH(const bool, crc);
        QFETCH(const int, bytes);
        Bench bench(rate, crc);
        const QByteArray content = randomBytes(bytes);
        bench.session.replyReceived = true; // of an earlier exchange
        bench.start(type, content);
        QVERIFY(!bench.session.replyReceived);
        QCOMPARE(bench.progress, 0);
        QVERIFY(bench.finish());
        QCOMPARE(bench.notices.shown, QStringList{complete});
        QCOMPARE(bench.progress, 100);
        QVERIFY(!bench.link.isOpen());
        QVERIFY(!bench.session.replyReceived);

        const QByteArray arrived =
            type == commandType::bmpDownload        ? bench.module.pictureMemory().left(bytes)
            : type == commandType::pagedBmpDownload ? bench.module.pictures().value(7).left(bytes)
            : type == commandType::jpgDownload
                ? bench.module.jpeg().content.left(bytes - bytes % 2)
                : bench.module.flash().read(3 * k7::Flash::blockBytes, bytes - bytes % 2);
        QVERIFY(arrived == content.left(arrived.size()));
        QVERIFY(arrived.size() >= bytes - 1);
        if (type == commandType::icoDownload) {
            // Whole units of 32 KiB go into the flash, zeros behind the file's last chunk.
            const int end = (bytes + 127) / 128 * 128;
            const int whole = (bytes + 32767) / 32768 * 32768;
            const QByteArray rest =
                bench.module.flash().read(3 * k7::Flash::blockBytes + end, whole - end + 1);
            QCOMPARE(rest, QByteArray(whole - end, '\0') + '\xFF');
        }
    }

    void osFilesArrive_data()
    {
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("bytes");
        QTest::addColumn<int>("frameBytes"); // of all frames
        QTest::addColumn<bool>("crc");
        for (const int rate : {9600, 115200, 6250000}) {
            QTest::addRow("one odd byte at %d", rate) << rate << 1 << 8 << false;
            QTest::addRow("one frame at %d", rate) << rate << 250 << 256 << false;
            QTest::addRow("one frame and a byte at %d", rate) << rate << 251 << 256 + 8 << false;
            QTest::addRow("many frames at %d", rate) << rate << 95904 << 383 * 256 + 160 << false;
            QTest::addRow("all the memory at %d", rate)
                << rate << 122880 << 491 * 256 + 136 << false;
            QTest::addRow("with CRC at %d", rate) << rate << 251 << 258 + 10 << true;
        }
    }

    void osFilesArrive()
    {
        QFETCH(const int, rate);
        QFETCH(const int, bytes);
        QFETCH(const int, frameBytes);
        QFETCH(const bool, crc);
        Bench bench(rate, crc);
        const QByteArray data = randomBytes(bytes);
        bench.os->load(QByteArray(4096, '\x11') + data);
        bench.os->start();
        bench.notices.whileOpen = [&bench] {
            QCOMPARE(bench.session.commandType, commandType::osDownload);
            QVERIFY(bench.link.isOpen());
        };
        QVERIFY(bench.finish());
        QCOMPARE(bench.notices.shown, QStringList{complete});
        // The announcement, the file in one piece, and then the two frames of the reset.
        QCOMPARE(bench.link.written.size(), 4);
        QCOMPARE(bench.link.written.at(0).mid(3, 4).toHex(), QByteArray("8f0000a0"));
        QCOMPARE(bench.link.written.at(1).size(), frameBytes);
        QVERIFY(bench.moduleVp(0x1000, bytes) == data);
        QCOMPARE(bench.module.restarts(), 1);
        QCOMPARE(bench.module.vp(6), quint16{0});
        QCOMPARE(bench.builder.vpAt(6), quint16{0x5A10});
        QCOMPARE(bench.builder.vpAt(7), quint16{0x1000});
        const int sendTick = bench.writeTicks.at(1) - bench.writeTicks.at(0);
        QCOMPARE(sendTick, 1664000 / rate + 2);
        // The reset is announced on the tick after the verdict.
        QCOMPARE(bench.writeTicks.at(2) - bench.writeTicks.at(1),
                 (frameBytes + 468) * 13000 / rate + 2 + 1);
    }

    void chunksKeepTheirTicks_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("bytes");
        QTest::addColumn<QVector<int>>("writeTicks");
        QTest::addColumn<int>("endTick");
        // Chunk and move command of two chunks.
        const int linear = commandType::bmpDownload;
        QTest::newRow("linear, 9600")
            << linear << 9600 << 480 << QVector<int>{1, 335, 355, 689} << 708;
        QTest::newRow("linear, 115200")
            << linear << 115200 << 480 << QVector<int>{1, 29, 32, 60} << 62;
        QTest::newRow("linear, 6250000")
            << linear << 6250000 << 480 << QVector<int>{1, 2, 3, 4} << 4;
        const int paged = commandType::pagedBmpDownload;
        QTest::newRow("paged, 115200")
            << paged << 115200 << 8194 << QVector<int>{1, 955, 957, 1911} << 1912;
        QTest::newRow("paged, 6250000")
            << paged << 6250000 << 8194 << QVector<int>{1, 19, 20, 38} << 38;
        // Two chunks, then the display command on the tick that ends the last.
        const int jpg = commandType::jpgDownload;
        QTest::newRow("JPEG, 115200") << jpg << 115200 << 300 << QVector<int>{1, 30, 58} << 60;
        QTest::newRow("JPEG, 460800") << jpg << 460800 << 300 << QVector<int>{1, 9, 16} << 17;
    }

    void chunksKeepTheirTicks()
    {
        QFETCH(const int, type);
        QFETCH(const int, rate);
        QFETCH(const int, bytes);
        QFETCH(const QVector<int>, writeTicks);
        QFETCH(const int, endTick);
        Bench bench(rate);
        bench.start(type, randomBytes(bytes));
        QVERIFY(bench.finish());
        QCOMPARE(bench.writeTicks, writeTicks);
        QCOMPARE(bench.ticks, endTick);
        QCOMPARE(bench.notices.shown, QStringList{complete});
    }

    void missingAcknowledgementEndsTheDownload_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("checkTick");
        QTest::newRow("linear") << commandType::bmpDownload << 115200 << 29;
        QTest::newRow("linear, fast") << commandType::bmpDownload << 6250000 << 2;
        QTest::newRow("paged") << commandType::pagedBmpDownload << 115200 << 955;
        QTest::newRow("paged, fast") << commandType::pagedBmpDownload << 6250000 << 19;
        QTest::newRow("JPEG") << commandType::jpgDownload << 115200 << 28;
        QTest::newRow("ICO") << commandType::icoDownload << 115200 << 16;
    }

    void missingAcknowledgementEndsTheDownload()
    {
        QFETCH(const int, type);
        QFETCH(const int, rate);
        QFETCH(const int, checkTick);
        Bench bench(rate);
        bench.answers = false;
        bench.notices.whileOpen = [&bench] {
            QVERIFY(!bench.link.isOpen());
            bench.tick(5000);
        };
        bench.start(type, randomBytes(1000));
        bench.tick(checkTick - 1);
        QVERIFY(bench.notices.shown.isEmpty());
        bench.tick(1);
        QCOMPARE(bench.notices.shown, QStringList{failure});
        QCOMPARE(bench.link.written.size(), 1);
        QCOMPARE(bench.session.commandType, commandType::idle);
        // The next download begins with the first chunk.
        bench.notices = {};
        bench.answers = true;
        bench.start(type, randomBytes(1000));
        QVERIFY(bench.finish());
        QCOMPARE(bench.link.written.at(1), bench.link.written.at(0));
        QCOMPARE(bench.notices.shown, QStringList{complete});
    }

    void onlyTheFirstAcknowledgementIsAwaited()
    {
        for (const int type : allTypes) {
            Bench bench;
            bench.start(type, randomBytes(20000));
            bench.tick(1);
            bench.answers = false;
            QVERIFY(bench.finish());
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
        QCOMPARE(bench.moved(0), quint16{0x5A80});
        QCOMPARE(bench.moved(1), quint16{0});
        QCOMPARE(bench.moved(2), quint16{0x7800});
        QCOMPARE(bench.moved(3), quint16{0xFFF0});
        QVERIFY(bench.finish());
        QCOMPARE(bench.moved(2), quint16{0x7801});
        QCOMPARE(bench.moved(3), quint16{0x0068});
        QVERIFY(bench.module.pictureMemory().left(pixels.size()) == pixels);
    }

    void pagedChunksAreFilledWithZeros()
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
    }

    void oddLastBytesOfJpegsFallAway()
    {
        Bench bench;
        bench.start(commandType::jpgDownload, QByteArray(241, '\x55'));
        QVERIFY(bench.finish());
        QCOMPARE(bench.link.written.at(1), QByteArray::fromHex("5AA503828078"));
        QCOMPARE(bench.module.jpeg().content.left(242),
                 QByteArray(240, '\x55') + QByteArray(2, '\0'));
    }

    void displayIsReadAfterTheLastChunk()
    {
        Bench bench;
        bench.start(commandType::jpgDownload, randomBytes(300));
        bench.tick(40);
        bench.display = {1, 0x1234, 0};
        QVERIFY(bench.finish());
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
        for (const bool isK7Uid1 : {true, false}) {
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
            QCOMPARE(moves.at(0), QByteArray(isK7Uid1 ? "5a0200188000000100000000"
                                                      : "5a0203000000800040000000"));
            QCOMPARE(moves.at(5), QByteArray(isK7Uid1 ? "5a02001d8000000100000000"
                                                      : "5a0203014000800040000000"));
            QCOMPARE(moves.at(8), QByteArray(isK7Uid1 ? "5a0200208000000100000000"
                                                      : "5a0204000000800040000000"));
            QVERIFY(bench.module.flash().read(3 * k7::Flash::blockBytes, content.size() - 1) ==
                    content.left(content.size() - 1));
        }
    }

    void endTickOutlivesADownload()
    {
        Bench bench;
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
        bench.rate = 6250000;
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
        QCOMPARE(bench.moduleVp(0x1000, 2), QByteArray("ab"));
        QCOMPARE(bench.module.restarts(), 1);
    }

    void osVerdictComesBeforeItsFields_data()
    {
        QTest::addColumn<bool>("answers");
        QTest::addColumn<QString>("verdict");
        QTest::addColumn<int>("restarts");
        QTest::newRow("acknowledged") << true << complete << 4;
        QTest::newRow("silent") << false << "Download failed !" << 0;
    }

    void osVerdictComesBeforeItsFields()
    {
        QFETCH(const bool, answers);
        QFETCH(const QString, verdict);
        QFETCH(const int, restarts);
        Bench bench;
        bench.answers = answers;
        bench.os->load(QByteArray(4096, 0) + "ab");
        bench.os->start();
        // Ticks go on while a box is open, and each opens one more. Each that is closed starts a
        // reset.
        bench.notices.whileOpen = [&bench] { bench.tick(100); };
        QVERIFY(bench.finish());
        QCOMPARE(bench.notices.shown, QStringList({verdict, verdict, verdict, verdict}));
        QCOMPARE(bench.module.restarts(), restarts);
    }

    void largeJpegsAreCompressedUntilTheyFit()
    {
        QImage noise(400, 300, QImage::Format_RGB32);
        const QByteArray bytes = randomBytes(static_cast<int>(noise.sizeInBytes()));
        std::copy(bytes.begin(), bytes.end(), noise.bits());
        const auto encoded = [](const QImage &image, int quality) {
            QByteArray jpeg;
            QBuffer buffer(&jpeg);
            buffer.open(QIODevice::WriteOnly);
            image.save(&buffer, "JPG", quality);
            return jpeg;
        };
        const QByteArray original = encoded(noise, 100);
        QVERIFY(original.size() > 0xFFFF);
        QByteArray expected;
        for (const int quality : {90, 81, 72, 65, 59, 53, 47, 43, 38, 34, 31, 28, 25, 22, 20}) {
            expected = encoded(picture::decode(original), quality);
            if (expected.size() <= 0xFFFF)
                break;
        }
        QVERIFY(expected.size() <= 0xFFFF);
        QCOMPARE(jpegWithin(original, 0xFFFF).bytes, expected);
        QCOMPARE(jpegWithin("as it is", 0xFFFF).bytes, QByteArray("as it is"));
        QCOMPARE(jpegWithin(QByteArray(0x10000, 'x'), 0xFFFF).refusal, &texts::fileIsNotPicture);
        QCOMPARE(jpegWithin(original, 1000).refusal, &texts::jpegTooLarge);
    }

    void numbersAreTheDigitsAtTheStart()
    {
        QCOMPARE(leadingNumber("/7/3_icons.ICO"), 3);
        QCOMPARE(leadingNumber("/7/icons.ICO"), 0);
        QCOMPARE(leadingNumber("/7/0012"), 12);
        QCOMPARE(leadingNumber("99999999999.bin"), 0);
    }
};

QTEST_GUILESS_MAIN(TestUartDownloads)
#include "tst_uart_downloads.moc"
