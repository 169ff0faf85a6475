#include "engine/system_reset.h"
#include "engine/traffic_log.h"
#include "engine/transaction.h"
#include "support/event_loop.h"
#include "support/row.h"
#include "support/step_bench.h"

namespace {

constexpr int acknowledged = commandType::writeVp;
constexpr int unanswered = commandType::readVp;

/// A session with a transaction of each answer, and the system reset.
struct Bench : StepBench
{
    explicit Bench(const StepPolicy &stepPolicy = windowPolicy) : StepBench(stepPolicy)
    {
        builder.setVp(0x84, 0x5A01);
        builder.setVp(0x85, 0x0007);
    }

    void run(int type, int times)
    {
        const auto frame = [this] { return builder.buildWriteVpFrame(0x84, 2); };
        if (type == acknowledged)
            write->start(frame);
        else if (type == unanswered)
            read->start(frame);
        else
            session.start(type);
        tick(times);
    }

    Transaction *write = add<Transaction>(acknowledged, line, Transaction::Answer::Acknowledgement);
    Transaction *read = add<Transaction>(unanswered, line, Transaction::Answer::Anything);
    SystemReset *reset = add<SystemReset>(line);
};

const QByteArray frame = QByteArray::fromHex("5AA5078200845A010007");
const QString failure = "Communication failure !";

} // namespace

class TestSteps : public QObject
{
    Q_OBJECT

private slots:
    void sessionsWithoutAStepOnlyCount()
    {
        Bench bench;
        bench.session.tick = 5;
        bench.tick(3);
        QCOMPARE(bench.session.tick, 0);
        bench.run(99, 250);
        QCOMPARE(bench.session.tick, 250);
        bench.session.tick = std::numeric_limits<int>::max();
        bench.tick(2);
        QCOMPARE(bench.session.tick, std::numeric_limits<int>::max());
        QCOMPARE(bench.link.opens, 0);
    }

    void transactionSendsAtTickOneAndEndsAtTickHundred()
    {
        Bench bench;
        bench.run(unanswered, 0);
        QCOMPARE(bench.link.opens, 0);
        bench.tick(1);
        QCOMPARE(bench.link.written, QVector<QByteArray>{frame});
        bench.session.replyReceived = true; // nothing that a read looks at
        bench.tick(98);
        QVERIFY(bench.link.isOpen());
        QCOMPARE(bench.session.commandType, unanswered);
        bench.tick(1);
        QCOMPARE(bench.session.commandType, commandType::idle);
        QVERIFY(!bench.link.isOpen());
        QVERIFY(bench.session.replyReceived);
        // It counts for the next write all the same, and for that one only.
        bench.run(acknowledged, 100);
        QVERIFY(!bench.session.replyReceived);
        QCOMPARE(bench.notices.shown, QStringList());
        bench.run(acknowledged, 100);
        QCOMPARE(bench.notices.shown, QStringList{failure});
        QCOMPARE(bench.link.written.size(), 3);
        QCOMPARE(bench.outcomes, (QVector<Outcome>{Outcome::Done, Outcome::Done, Outcome::Failed}));

        Bench strict{StepPolicy()};
        strict.session.replyReceived = true; // of an earlier exchange
        strict.run(acknowledged, 250);
        QCOMPARE(strict.outcomes, QVector<Outcome>{});
        strict.tick(5);
        QCOMPARE(strict.outcomes, QVector<Outcome>{Outcome::Failed});
    }

    void ticksDuringTheBoxFindTheSessionIdle()
    {
        Bench bench;
        bench.notices.whileOpen = [&bench] {
            QCOMPARE(bench.session.commandType, commandType::idle);
            QVERIFY(!bench.link.isOpen());
            bench.tick(300);
        };
        bench.run(acknowledged, 99);
        QCOMPARE(bench.notices.shown, QStringList());
        bench.tick(1);
        QCOMPARE(bench.notices.shown, QStringList{failure});
        QCOMPARE(bench.link.written.size(), 1);
    }

    void portThatCannotBeOpenedEndsTheSession()
    {
        for (const int type : {acknowledged, unanswered, commandType::systemReset}) {
            const Row row(type);
            Bench bench;
            bench.link.canOpen = false;
            QString cause = "Another program is using the port. Close that program first.";
            if (type == unanswered) {
                bench.link.programs = QStringList{"picocom (4711)", "k7 (12)"};
                cause += "\nIt is held by picocom (4711), k7 (12).";
            }
            bench.notices.whileOpen = [&bench] {
                QCOMPARE(bench.session.commandType, commandType::idle);
                bench.tick(10);
            };
            bench.run(type, 200);
            QCOMPARE(bench.notices.shown, QStringList{"Serial opening failed !"});
            QCOMPARE(bench.notices.details, QStringList{cause});
            QVERIFY(bench.link.written.isEmpty());
        }
    }

    void replacingExchangeStartsAtTickOneOnTheOpenPort()
    {
        Bench bench;
        bench.run(unanswered, 50);
        bench.run(acknowledged, 1);
        QCOMPARE(bench.link.opens, 1);
        QCOMPARE(bench.link.written.size(), 2);
        bench.tick(98);
        QCOMPARE(bench.notices.shown, QStringList());
        bench.tick(1);
        QCOMPARE(bench.notices.shown, QStringList{failure});
    }

    void resetSendsTwoFramesAndCloses()
    {
        Bench bench;
        bench.run(commandType::systemReset, 82);
        QCOMPARE(bench.link.written.size(), 2);
        QCOMPARE(bench.link.written.at(0), QByteArray::fromHex("5AA5048F0000A0"));
        QCOMPARE(bench.link.written.at(1), QByteArray::fromHex("5AA507820004 55AA5A5A"));
        QCOMPARE(bench.writeTicks, (QVector<int>{1, 72}));
        QVERIFY(bench.link.isOpen());
        bench.tick(1);
        QVERIFY(!bench.link.isOpen());
        QCOMPARE(bench.session.commandType, commandType::idle);
        QCOMPARE(bench.notices.shown, QStringList());
    }

    void replacedResetGoesOnWhereItStood()
    {
        Bench bench;
        bench.run(commandType::systemReset, 5);
        bench.run(unanswered, 5);
        bench.run(commandType::systemReset, 71);
        QCOMPARE(bench.writeTicks, (QVector<int>{1, 6, 81}));
        QVERIFY(bench.link.written.last().endsWith(QByteArray::fromHex("55AA5A5A")));
    }

    void lostLinkEndsTheExchangeThatRunsOnIt()
    {
        for (const int type : {acknowledged, unanswered, commandType::systemReset}) {
            const Row row(type);
            Bench bench;
            FakeLink other;
            bench.run(type, 20);
            bench.session.replyReceived = true;
            bench.dispatch.linkLost(other);
            bench.dispatch.linkLost(bench.link); // found open again
            QCOMPARE(bench.session.commandType, type);
            bench.link.close();
            bench.dispatch.linkLost(bench.link);
            QCOMPARE(bench.session.commandType, commandType::idle);
            QVERIFY(!bench.session.replyReceived);
            bench.tick(200);
            bench.dispatch.linkLost(bench.link);
            QCOMPARE(bench.notices.shown, QStringList{failure});
            // The next exchange begins anew.
            bench.run(type, 1);
            QCOMPARE(bench.link.written.size(), 2);
            QCOMPARE(bench.link.written.at(1), bench.link.written.at(0));
        }
    }

    void trafficIsLoggedInOrder()
    {
        Bench bench;
        QStringList lines;
        connect(&bench.log, &TrafficLog::linesReady, this,
                [&lines](const QStringList &batch) { lines += batch; });
        bench.run(unanswered, 1);
        bench.log.add(TrafficLog::Direction::Received, QByteArray::fromHex("AB00"));
        bench.run(commandType::systemReset, 200);
        COMPARE_SOON(lines, (QStringList{"5aa5078200845a010007", "ab00"}));
        bench.log.add(TrafficLog::Direction::Received, "x");
        bench.log.clear();
        bench.log.add(TrafficLog::Direction::Received, "y");
        COMPARE_SOON(lines.size(), 3);
        QCOMPARE(lines.last(), QString("79"));
    }
};

QTEST_GUILESS_MAIN(TestSteps)
#include "tst_steps.moc"
