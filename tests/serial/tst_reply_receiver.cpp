#include "serial/frame_builder.h"
#include "serial/reply_receiver.h"

#include <QSignalSpy>
#include <QtTest>

namespace {

/// A receiver with everything it writes to.
struct Path
{
    explicit Path(const ReceiveRules &rules) : receiver(rules, mirrors, flag)
    {
        receiver.setHeader(0x5A, 0xA5);
        QObject::connect(&receiver, &ReplyReceiver::vpRead,
                         [this](quint16 start) { announced = mirrors.vpAt(start); });
    }

    void receive(const char *hex) { receiver.receive(QByteArray::fromHex(hex)); }

    FrameBuilder mirrors;
    bool flag = false;
    int announced = 0; // the first word of a reply when it was announced
    ReplyReceiver receiver;
    QSignalSpy vpRead{&receiver, &ReplyReceiver::vpRead};
    QSignalSpy registersRead{&receiver, &ReplyReceiver::registersRead};
};

constexpr auto pictureReply = "5AA506 83 0014 01 0007";

} // namespace

class TestReplyReceiver : public QObject
{
    Q_OBJECT

private slots:
    void onlyWhatAnswersTheRequestCounts()
    {
        constexpr auto write = "5AA507820084 5A010007";
        constexpr auto read = "5AA504 83 0014 01";
        constexpr auto ok = "5AA503 82 4F4B";
        const struct
        {
            const char *request;
            bool hasCrc;
            const char *reply;
            int answers;
        } cases[] = {
            {write, false, ok, 1},
            {write, false, "5AA503 82 4F4B 5AA503 82 4F4B", 2},
            {write, false, "FF 4F4B", 1},
            {write, false, "5AA503 82 4E47", 0}, // refused
            {write, false, "5AA503 80 4F4B", 0}, // of another command
            {write, false, "5AA583 82 4F4B", 0}, // unfinished
            {write, false, "5AA583 82 4F4B 5AA503 82 4F4B", 1},
            {write, true, ok, 0},
            {write, true, "4F4B", 0},
            {write, true, "5AA505 82 4F4B A5EF", 1},
            {read, false, pictureReply, 1},
            {read, false, "5AA506 83 0015 01 0007", 0},
            {read, false, "5AA506 83 0014 02 0007", 0},
            {read, false, "5AA504 83 0014 01", 0}, // without its data
            {read, false, ok, 0},
            {"5AA504 81 02FE 01", false, "5AA505 81 02FE 01 33", 1},
            {"5AA504 81 02FE 01", false, "5AA505 81 03FE 01 33", 0},
        };
        for (const auto &[request, hasCrc, reply, answers] : cases) {
            const QByteArray bytes = QByteArray::fromHex(reply);
            for (const int cut : {bytes.size(), 1}) {
                Path path(uartReceiveRules);
                path.receiver.setHeader(0x5A, 0xA5, hasCrc);
                path.receive("5AA504 82 4F"); // of an older answer
                path.receiver.expect(QByteArray::fromHex(request));
                for (int i = 0; i < bytes.size(); i += cut)
                    path.receiver.receive(bytes.mid(i, cut));
                QVERIFY2(path.receiver.answers() == answers, reply);
            }
        }
    }

    void repliesAreUnderstood()
    {
        const struct
        {
            const char *bytes;
            int start;
            QVector<int> words;
        } cases[] = {
            {pictureReply, 0x14, {7}},
            {"5AA50883001401 0007 FFFF", 0x14, {7}}, // CRC bytes only count
            {"5AA50883FFFF02 12345678", 0xFFFF, {0x1234, 0x5678}},
        };
        for (const ReceiveRules &rules : {uartReceiveRules, ed2ReceiveRules})
            for (const auto &[bytes, start, words] : cases) {
                Path path(rules);
                path.receive(bytes);
                QCOMPARE(path.vpRead.count(), 1);
                QCOMPARE(path.vpRead.first().first().toInt(), start);
                QCOMPARE(path.announced, words.first());
                for (int i = 0; i < words.size(); ++i)
                    QCOMPARE(int(path.mirrors.vpAt((start + i) & 0xFFFF)), words.at(i));
                QVERIFY(!path.flag);
            }
    }

    void acknowledgementsSetTheFlag()
    {
        for (const ReceiveRules &rules : {uartReceiveRules, ed2ReceiveRules}) {
            for (const char *bytes : {"5AA503824F4B", "5AA503804F4B", "5AA5038F4F4B",
                                      "5AA505824F4B1234", "2E2E4F4B2E2E"}) {
                Path path(rules);
                path.receive(bytes);
                QVERIFY2(path.flag, bytes);
            }
            for (const char *bytes : {"5AA503854F4B", "5AA503824F4C", "5BA503850102"}) {
                Path path(rules);
                path.receive(bytes);
                QVERIFY2(!path.flag, bytes);
            }
        }
    }

    void replySplitAnywhereIsFound()
    {
        const QByteArray reply = QByteArray::fromHex(pictureReply);
        for (const ReceiveRules &rules : {uartReceiveRules, ed2ReceiveRules})
            for (int cut = 1; cut < reply.size(); ++cut) {
                Path path(rules);
                path.receiver.receive(reply.left(cut));
                QCOMPARE(path.vpRead.count(), 0);
                path.receiver.receive(reply.mid(cut));
                // ED2 loses a frame that is cut behind its header bytes. That is wanted.
                const bool isLost = !rules.waitsForLengthByte && (cut == 1 || cut == 2);
                QCOMPARE(path.vpRead.count(), isLost ? 0 : 1);
                QCOMPARE(path.mirrors.vpAt(0x14), quint16(isLost ? 0 : 7));
            }
    }

    void bareAcknowledgementWaitsForSixBytesOnUart()
    {
        Path path(uartReceiveRules);
        path.receiver.receive("OK");
        path.receiver.receive("...");
        QVERIFY(!path.flag);
        path.receiver.receive(".");
        QVERIFY(path.flag);
        Path ed2(ed2ReceiveRules);
        ed2.receiver.receive("OK");
        QVERIFY(ed2.flag);
    }

    void framesBeforeAnUnfinishedOneAreDispatchedAgain()
    {
        for (const ReceiveRules &rules : {uartReceiveRules, ed2ReceiveRules}) {
            Path path(rules);
            path.receive("5AA503824F4B 5AA506830014010007 5AA50683");
            QCOMPARE(path.vpRead.count(), 1);
            path.flag = false;
            path.receive("00300180 00");
            QCOMPARE(path.vpRead.count(), 3);
            QVERIFY(path.flag);
            QCOMPARE(path.mirrors.vpAt(0x30), quint16(0x8000));
            path.receive("000000000000");
            QCOMPARE(path.vpRead.count(), 3);
        }
    }

    void garbageBetweenFramesIsSkipped()
    {
        Path path(uartReceiveRules);
        path.receive("5A0011A5 5AA506830014010007 FF5A 5AA5078102FE03A1A2A3 00");
        QCOMPARE(path.vpRead.count(), 1);
        QCOMPARE(path.registersRead.count(), 1);
        // Registers wrap on their page.
        for (const auto &[page, address, value] :
             {std::tuple(2, 0xFE, 0xA1), {2, 0xFF, 0xA2}, {2, 0x00, 0xA3}, {3, 0x00, 0}})
            QCOMPARE(int{path.mirrors.registerAt(page, address)}, value);
    }

    void lyingRepliesReadMissingBytesAsZero()
    {
        const struct
        {
            const char *bytes;
            int registersRead;
            int vpRead;
            quint8 registerValue; // at 0x11, where all bits were set
            quint16 word;         // likewise
        } cases[] = {
            {"5AA50683001003 0007", 0, 1, 0xFF, 0},      {"5AA50583001101 00", 0, 1, 0xFF, 0},
            {"000000 5AA503830011", 0, 1, 0xFF, 0xFFFF}, // no count
            {"000000 5AA503810011", 1, 0, 0xFF, 0xFFFF}, {"5AA505810010FF 01", 1, 0, 0, 0xFFFF},
            {"5AA50183 001100", 0, 0, 0xFF, 0xFFFF}, // no address
            {"5AA5028300 1100", 0, 0, 0xFF, 0xFFFF},     {"5AA5028100 1000", 0, 0, 0xFF, 0xFFFF},
            {"5AA500 5AA500", 0, 0, 0xFF, 0xFFFF},
        };
        for (const auto &[bytes, registersRead, vpRead, registerValue, word] : cases) {
            Path path(uartReceiveRules);
            path.mirrors.setVp(0x11, 0xFFFF);
            path.mirrors.setRegister(0, 0x11, 0xFF);
            path.receive(bytes);
            QVERIFY2(path.registersRead.count() == registersRead, bytes);
            QVERIFY2(path.vpRead.count() == vpRead, bytes);
            QVERIFY2(path.mirrors.vpAt(0x11) == word, bytes);
            QVERIFY2(path.mirrors.registerAt(0, 0x11) == registerValue, bytes);
        }
    }

    void keptBytesAreBounded()
    {
        // A stream that is always cut inside a frame never lets the receiver forget anything.
        Path path(uartReceiveRules);
        const QByteArray reply = QByteArray::fromHex(pictureReply);
        const QByteArray chunk = reply.mid(4) + reply.repeated(999) + reply.left(4);
        path.receiver.receive(reply.left(4));
        for (int i = 0; i < 7; ++i)
            path.receiver.receive(chunk);
        const int before = path.vpRead.count();
        path.receiver.receive(chunk);
        path.receiver.receive(chunk);
        // The bound let go of the first 7000 frames, so these two reads repeated only a few.
        const int repeated = path.vpRead.count() - before;
        QVERIFY2(repeated >= 2000 && repeated < 12000, qPrintable(QString::number(repeated)));
    }
};

QTEST_APPLESS_MAIN(TestReplyReceiver)
#include "tst_reply_receiver.moc"
