#include "download/step_dispatch.h"
#include "download/system_reset.h"
#include "download/transaction.h"
#include "serial/traffic_log.h"
#include "support/fake_link.h"
#include "support/recording_notices.h"

#include <QSignalSpy>
#include <QtTest>

namespace {

/// A session with a transaction of each answer, and the system reset, over a link without a device.
struct Bench
{
    static constexpr int acknowledged = commandType::writeVp;
    static constexpr int unanswered = commandType::readVp;

    Bench()
    {
        builder.setHeader(0x5A, 0xA5, false);
        const auto frame = [this] {
            return builder.buildWriteVpFrame(session.writeStart, session.writeCount);
        };
        for (const auto &[type, answer] :
             {std::pair(acknowledged, Transaction::Answer::Acknowledgement),
              std::pair(unanswered, Transaction::Answer::Anything)})
            dispatch.add(type,
                         std::make_unique<Transaction>(session, link, notices, log, answer, frame));
        dispatch.add(commandType::systemReset,
                     std::make_unique<SystemReset>(session, link, notices, builder));
        session.writeStart = 0x84;
        session.writeCount = 2;
        builder.setVp(0x84, 0x5A01);
        builder.setVp(0x85, 0x0007);
    }

    void tick(int times)
    {
        for (int i = 0; i < times; ++i)
            dispatch.tick();
    }

    DownloadSession session;
    FrameBuilder builder;
    FakeLink link;
    RecordingNotices notices;
    TrafficLog log;
    StepDispatch dispatch{session};
};

const QByteArray frame = QByteArray::fromHex("5AA5078200845A010007");
const QString failure = "Communication failure !";

} // namespace

class TestSteps : public QObject
{
    Q_OBJECT

private slots:
    void idleSessionsStayAtTickZero()
    {
        Bench bench;
        bench.session.tick = 5;
        bench.tick(3);
        QCOMPARE(bench.session.tick, 0);
    }

    void unknownCommandTypesOnlyCount()
    {
        Bench bench;
        bench.session.start(99);
        bench.tick(250);
        QCOMPARE(bench.session.tick, 250);
        QCOMPARE(bench.link.opens, 0);
    }

    void transactionSendsAtTickOneAndEndsAtTickHundred()
    {
        Bench bench;
        bench.session.start(Bench::unanswered);
        QCOMPARE(bench.link.opens, 0);
        bench.tick(1);
        QCOMPARE(bench.link.written, QVector<QByteArray>{frame});
        bench.tick(98);
        QVERIFY(bench.link.isOpen());
        QCOMPARE(bench.session.commandType, Bench::unanswered);
        bench.tick(1);
        QCOMPARE(bench.session.commandType, commandType::idle);
        QVERIFY(!bench.link.isOpen());
        QCOMPARE(bench.link.written.size(), 1);
    }

    void acknowledgedTransactionEndsSilently()
    {
        Bench bench;
        bench.session.start(Bench::acknowledged);
        bench.tick(40);
        bench.session.replyReceived = true;
        bench.tick(60);
        QCOMPARE(bench.session.commandType, commandType::idle);
        QVERIFY(!bench.session.replyReceived);
        QVERIFY(bench.notices.shown.isEmpty());
    }

    void missingAcknowledgementIsReportedOnce()
    {
        Bench bench;
        bench.session.start(Bench::acknowledged);
        bench.tick(99);
        QVERIFY(bench.notices.shown.isEmpty());
        bench.tick(200);
        QCOMPARE(bench.notices.shown, QStringList{failure});
        QVERIFY(!bench.link.isOpen());
    }

    void ticksDuringTheBoxFindTheSessionIdle()
    {
        Bench bench;
        bench.notices.whileOpen = [&bench] {
            QCOMPARE(bench.session.commandType, commandType::idle);
            QVERIFY(!bench.link.isOpen());
            bench.tick(300);
        };
        bench.session.start(Bench::acknowledged);
        bench.tick(100);
        QCOMPARE(bench.notices.shown, QStringList{failure});
        QCOMPARE(bench.link.written.size(), 1);
    }

    void unansweredTransactionDoesNotLookAtTheFlag()
    {
        Bench bench;
        bench.session.start(Bench::unanswered);
        bench.tick(50);
        bench.session.replyReceived = true;
        bench.tick(50);
        QVERIFY(bench.notices.shown.isEmpty());
        QVERIFY(bench.session.replyReceived);
    }

    void acknowledgementLeftBehindCountsForTheNextWrite()
    {
        Bench bench;
        bench.session.replyReceived = true;
        bench.session.start(Bench::acknowledged);
        bench.tick(100);
        QVERIFY(bench.notices.shown.isEmpty());
        bench.session.start(Bench::acknowledged);
        bench.tick(100);
        QCOMPARE(bench.notices.shown, QStringList{failure});
    }

    void portThatCannotBeOpenedEndsTheSession_data()
    {
        QTest::addColumn<int>("type");
        QTest::newRow("acknowledged") << int(Bench::acknowledged);
        QTest::newRow("unanswered") << int(Bench::unanswered);
        QTest::newRow("reset") << int(commandType::systemReset);
    }

    void portThatCannotBeOpenedEndsTheSession()
    {
        QFETCH(const int, type);
        Bench bench;
        bench.link.canOpen = false;
        bench.notices.whileOpen = [&bench] {
            QCOMPARE(bench.session.commandType, commandType::idle);
            bench.tick(10);
        };
        bench.session.start(type);
        bench.tick(200);
        QCOMPARE(bench.notices.shown, QStringList{"Serial opening failed !"});
        QVERIFY(bench.notices.details.first().startsWith("Another program is using the port."));
        QVERIFY(bench.link.written.isEmpty());
    }

    void replacingExchangeStartsAtTickOneOnTheOpenPort()
    {
        Bench bench;
        bench.session.start(Bench::unanswered);
        bench.tick(50);
        bench.session.start(Bench::acknowledged);
        bench.tick(1);
        QCOMPARE(bench.link.opens, 1);
        QCOMPARE(bench.link.written.size(), 2);
        bench.tick(98);
        QVERIFY(bench.notices.shown.isEmpty());
        bench.tick(1);
        QCOMPARE(bench.notices.shown, QStringList{failure});
    }

    void resetSendsTwoFramesAndCloses()
    {
        Bench bench;
        bench.session.start(commandType::systemReset);
        bench.tick(1);
        QCOMPARE(bench.link.written, QVector<QByteArray>{QByteArray::fromHex("5AA5048F0000A0")});
        bench.tick(70);
        QCOMPARE(bench.link.written.size(), 1);
        bench.tick(1);
        QCOMPARE(bench.link.written.size(), 2);
        QCOMPARE(bench.link.written.last(), QByteArray::fromHex("5AA507820004 55AA5A5A"));
        bench.tick(10);
        QVERIFY(bench.link.isOpen());
        bench.tick(1);
        QVERIFY(!bench.link.isOpen());
        QCOMPARE(bench.session.commandType, commandType::idle);
        QVERIFY(bench.notices.shown.isEmpty());
    }

    void replacedResetGoesOnWhereItStood()
    {
        Bench bench;
        bench.session.start(commandType::systemReset);
        bench.tick(5);
        bench.session.start(Bench::unanswered);
        bench.tick(5);
        bench.session.start(commandType::systemReset);
        bench.tick(70);
        QCOMPARE(bench.link.written.size(), 2);
        bench.tick(1);
        QCOMPARE(bench.link.written.last(), QByteArray::fromHex("5AA507820004 55AA5A5A"));
    }

    void lostLinkEndsTheExchangeThatRunsOnIt_data() { portThatCannotBeOpenedEndsTheSession_data(); }

    void lostLinkEndsTheExchangeThatRunsOnIt()
    {
        QFETCH(const int, type);
        Bench bench;
        bench.session.start(type);
        bench.tick(20);
        bench.session.replyReceived = true;
        bench.link.close();
        bench.dispatch.linkLost(bench.link);
        QCOMPARE(bench.session.commandType, commandType::idle);
        QCOMPARE(bench.notices.shown, QStringList{failure});
        bench.tick(200);
        QCOMPARE(bench.notices.shown.size(), 1);

        // The next exchange begins anew.
        bench.link.written.clear();
        bench.session.start(type);
        bench.tick(1);
        QCOMPARE(bench.link.written.size(), 1);
    }

    void lostLinkOfAnotherExchangeIsSilent()
    {
        Bench bench;
        FakeLink other;
        bench.dispatch.linkLost(bench.link);
        bench.session.start(Bench::unanswered);
        bench.tick(20);
        bench.dispatch.linkLost(other);
        QCOMPARE(bench.session.commandType, Bench::unanswered);
        QVERIFY(bench.notices.shown.isEmpty());
    }

    void trafficIsLoggedInOrder()
    {
        Bench bench;
        QStringList lines;
        connect(&bench.log, &TrafficLog::linesReady, this,
                [&lines](const QStringList &batch) { lines += batch; });
        bench.session.start(Bench::unanswered);
        bench.tick(1);
        bench.log.add(TrafficLog::Direction::Received, QByteArray::fromHex("AB00"));
        bench.session.start(commandType::systemReset);
        bench.tick(200);
        QTRY_COMPARE(lines, (QStringList{"5aa5078200845a010007", "ab00"}));
        bench.log.add(TrafficLog::Direction::Received, "x");
        bench.log.clear();
        bench.log.add(TrafficLog::Direction::Received, "y");
        QTRY_COMPARE(lines.size(), 3);
        QCOMPARE(lines.last(), QString("79"));
    }
};

QTEST_GUILESS_MAIN(TestSteps)
#include "tst_steps.moc"
