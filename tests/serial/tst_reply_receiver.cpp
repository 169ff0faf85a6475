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
    }

    void receive(const char *hex) { receiver.receive(QByteArray::fromHex(hex)); }

    FrameBuilder mirrors;
    bool flag = false;
    ReplyReceiver receiver;
};

constexpr auto pictureReply = "5AA506 83 0014 01 0007";

} // namespace

class TestReplyReceiver : public QObject
{
    Q_OBJECT

private slots:
    void repliesAreUnderstood_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("start");
        QTest::addColumn<QVector<int>>("words");
        QTest::newRow("one word") << QByteArray::fromHex("5AA50683001401 0007") << 0x14
                                  << QVector<int>{7};
        QTest::newRow("CRC bytes only count")
            << QByteArray::fromHex("5AA50883001401 0007 FFFF") << 0x14 << QVector<int>{7};
        QTest::newRow("wraps at the end of VP memory")
            << QByteArray::fromHex("5AA50883FFFF02 12345678") << 0xFFFF
            << QVector<int>{0x1234, 0x5678};
    }

    void repliesAreUnderstood()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const int, start);
        QFETCH(const QVector<int>, words);
        for (const ReceiveRules &rules : {uartReceiveRules, ed2ReceiveRules}) {
            Path path(rules);
            QSignalSpy vpRead(&path.receiver, &ReplyReceiver::vpRead);
            path.receiver.receive(bytes);
            QCOMPARE(vpRead.count(), 1);
            QCOMPARE(vpRead.first().first().toInt(), start);
            for (int i = 0; i < words.size(); ++i)
                QCOMPARE(int(path.mirrors.vpAt((start + i) & 0xFFFF)), words.at(i));
            QVERIFY(!path.flag);
        }
    }

    void acknowledgementsSetTheFlag_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("uart");
        QTest::addColumn<bool>("ed2");
        QTest::newRow("write VP") << QByteArray::fromHex("5AA503824F4B") << true << true;
        QTest::newRow("write register") << QByteArray::fromHex("5AA503804F4B") << true << true;
        QTest::newRow("system") << QByteArray::fromHex("5AA5038F4F4B") << true << true;
        QTest::newRow("with CRC") << QByteArray::fromHex("5AA505824F4B1234") << true << true;
        QTest::newRow("other command") << QByteArray::fromHex("5AA503854F4B") << false << false;
        QTest::newRow("no O, K") << QByteArray::fromHex("5AA503824F4C") << false << false;
        QTest::newRow("bare") << QByteArray("OK") << false << true;
        QTest::newRow("in garbage") << QByteArray("..OK..") << true << true;
        QTest::newRow("other header") << QByteArray::fromHex("5BA503850102") << false << false;
    }

    void acknowledgementsSetTheFlag()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const bool, uart);
        QFETCH(const bool, ed2);
        Path uartPath(uartReceiveRules);
        uartPath.receiver.receive(bytes);
        QCOMPARE(uartPath.flag, uart);
        Path ed2Path(ed2ReceiveRules);
        ed2Path.receiver.receive(bytes);
        QCOMPARE(ed2Path.flag, ed2);
    }

    void replySplitAnywhereIsFoundOnUart()
    {
        const QByteArray reply = QByteArray::fromHex(pictureReply);
        for (int cut = 1; cut < reply.size(); ++cut) {
            Path path(uartReceiveRules);
            QSignalSpy vpRead(&path.receiver, &ReplyReceiver::vpRead);
            path.receiver.receive(reply.left(cut));
            QCOMPARE(vpRead.count(), 0);
            path.receiver.receive(reply.mid(cut));
            QCOMPARE(vpRead.count(), 1);
            QCOMPARE(path.mirrors.vpAt(0x14), quint16(7));
        }
    }

    void replySplitAnywhereButBehindTheHeaderIsFoundOnEd2()
    {
        const QByteArray reply = QByteArray::fromHex(pictureReply);
        for (int cut = 1; cut < reply.size(); ++cut) {
            Path path(ed2ReceiveRules);
            QSignalSpy vpRead(&path.receiver, &ReplyReceiver::vpRead);
            path.receiver.receive(reply.left(cut));
            path.receiver.receive(reply.mid(cut));
            // Cut before its length byte, a reply is lost on this link.
            QCOMPARE(vpRead.count(), cut > 2 ? 1 : 0);
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
    }

    void framesBeforeAnUnfinishedOneAreDispatchedAgain()
    {
        for (const ReceiveRules &rules : {uartReceiveRules, ed2ReceiveRules}) {
            Path path(rules);
            QSignalSpy vpRead(&path.receiver, &ReplyReceiver::vpRead);
            path.receive("5AA503824F4B 5AA506830014010007 5AA50683");
            QCOMPARE(vpRead.count(), 1);
            path.flag = false;
            path.receive("00300180 00");
            QCOMPARE(vpRead.count(), 3);
            QVERIFY(path.flag);
            QCOMPARE(path.mirrors.vpAt(0x30), quint16(0x8000));
            path.receive("000000000000");
            QCOMPARE(vpRead.count(), 3);
        }
    }

    void garbageBetweenFramesIsSkipped()
    {
        Path path(uartReceiveRules);
        QSignalSpy vpRead(&path.receiver, &ReplyReceiver::vpRead);
        QSignalSpy registersRead(&path.receiver, &ReplyReceiver::registersRead);
        path.receive("5A0011A5 5AA506830014010007 FF5A 5AA5078102FE03A1A2A3 00");
        QCOMPARE(vpRead.count(), 1);
        QCOMPARE(registersRead.count(), 1);
        QCOMPARE(path.mirrors.registerAt(2, 0xFE), quint8(0xA1));
        QCOMPARE(path.mirrors.registerAt(2, 0xFF), quint8(0xA2));
        QCOMPARE(path.mirrors.registerAt(2, 0x00), quint8(0xA3));
        QCOMPARE(path.mirrors.registerAt(3, 0x00), quint8(0));
    }

    void lyingRepliesReadMissingBytesAsZero_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("registersRead");
        QTest::addColumn<int>("vpRead");
        QTest::addColumn<bool>("overwritesRegister");
        QTest::addColumn<bool>("overwritesWord");
        const auto row = [](const char *title, const char *hex, int registers, int vp,
                            bool overwritesRegister, bool overwritesWord) {
            QTest::newRow(title) << QByteArray::fromHex(hex) << registers << vp
                                 << overwritesRegister << overwritesWord;
        };
        row("more words than came", "5AA50683001003 0007", 0, 1, false, true);
        row("half a word", "5AA50583001101 00", 0, 1, false, true);
        row("no count", "000000 5AA503830011", 0, 1, false, false);
        row("registers without count", "000000 5AA503810011", 1, 0, false, false);
        row("more registers than came", "5AA505810010FF 01", 1, 0, true, false);
        row("no address", "5AA50183 001100", 0, 0, false, false);
        row("half an address", "5AA5028300 1100", 0, 0, false, false);
        row("registers without address", "5AA5028100 1000", 0, 0, false, false);
        row("length 0", "5AA500 5AA500", 0, 0, false, false);
    }

    void lyingRepliesReadMissingBytesAsZero()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const int, registersRead);
        QFETCH(const int, vpRead);
        QFETCH(const bool, overwritesRegister);
        QFETCH(const bool, overwritesWord);
        Path path(uartReceiveRules);
        path.mirrors.setVp(0x11, 0xEEEE);
        path.mirrors.setRegister(0, 0x11, 0xEE);
        QSignalSpy registersSpy(&path.receiver, &ReplyReceiver::registersRead);
        QSignalSpy vpSpy(&path.receiver, &ReplyReceiver::vpRead);
        path.receiver.receive(bytes);
        QCOMPARE(registersSpy.count(), registersRead);
        QCOMPARE(vpSpy.count(), vpRead);
        QCOMPARE(path.mirrors.vpAt(0x11), overwritesWord ? quint16(0) : quint16(0xEEEE));
        QCOMPARE(path.mirrors.registerAt(0, 0x11), overwritesRegister ? quint8(0) : quint8(0xEE));
    }

    void keptBytesAreBounded()
    {
        // A stream that is always cut inside a frame never lets the receiver forget anything.
        Path path(uartReceiveRules);
        QSignalSpy vpRead(&path.receiver, &ReplyReceiver::vpRead);
        const QByteArray reply = QByteArray::fromHex(pictureReply);
        const QByteArray chunk = reply.mid(4) + reply.repeated(999) + reply.left(4);
        path.receiver.receive(reply.left(4));
        for (int i = 0; i < 7; ++i)
            path.receiver.receive(chunk);
        const int before = vpRead.count();
        path.receiver.receive(chunk);
        path.receiver.receive(chunk);
        // The bound let go of the first 7000 frames, so these two reads repeated only a few.
        QVERIFY2(vpRead.count() - before < 12000,
                 qPrintable(QString::number(vpRead.count() - before)));
        QVERIFY(vpRead.count() - before >= 2000);
    }

    void randomBytesAreHarmless()
    {
        QRandomGenerator random(1);
        for (const ReceiveRules &rules : {uartReceiveRules, ed2ReceiveRules}) {
            Path path(rules);
            QSignalSpy vpRead(&path.receiver, &ReplyReceiver::vpRead);
            for (int i = 0; i < 2000; ++i) {
                QByteArray bytes;
                for (int n = random.bounded(12); n > 0; --n)
                    bytes.append("\x5A\xA5\x05\x83OK\x81"[random.bounded(7)]);
                path.receiver.receive(bytes);
            }
            QVERIFY(path.flag);
            QVERIFY(vpRead.count() > 0);
        }
    }
};

QTEST_APPLESS_MAIN(TestReplyReceiver)
#include "tst_reply_receiver.moc"
