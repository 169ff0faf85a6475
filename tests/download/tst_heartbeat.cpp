#include "download/heartbeat.h"
#include "download/step_dispatch.h"
#include "support/event_loop.h"
#include "support/fake_link.h"
#include "support/recording_notices.h"

#include <QEventLoop>
#include <QtTest>

namespace {

constexpr int type = 99;
constexpr qint64 millisecond = TickClock::tickNanoseconds;

/// A step that does what the test says.
class ScriptedStep final : public Step
{
public:
    using Step::Step;
    std::function<void(int tick)> onTick = [](int) {};

    void step() override
    {
        ticks.append(m_session.tick);
        onTick(m_session.tick);
    }

    QVector<int> ticks;
};

/// A running heartbeat with one scripted step.
struct Bench
{
    Bench()
    {
        auto owned = std::make_unique<ScriptedStep>(session, link, notices);
        step = owned.get();
        dispatch.add(type, std::move(owned));
        heartbeat.start();
    }

    DownloadSession session;
    FakeLink link;
    RecordingNotices notices;
    StepDispatch dispatch{session};
    ScriptedStep *step;
    int reads = 0;
    Heartbeat heartbeat{session, dispatch, [this] { ++reads; }};
};

QVector<int> upTo(int last)
{
    QVector<int> ticks(last);
    std::iota(ticks.begin(), ticks.end(), 1);
    return ticks;
}

} // namespace

class TestHeartbeat : public QObject
{
    Q_OBJECT

private slots:
    void clockCountsWholeMilliseconds()
    {
        TickClock clock;
        clock.restart(5 * millisecond);
        QVERIFY(!clock.take(6 * millisecond - 1));
        QVERIFY(clock.take(6 * millisecond));
        QVERIFY(!clock.take(6 * millisecond));
        // A late timeout makes up for what passed, and the fraction is not lost.
        QVERIFY(clock.take(8 * millisecond + millisecond / 2));
        QVERIFY(clock.take(8 * millisecond + millisecond / 2));
        QVERIFY(!clock.take(8 * millisecond + millisecond / 2));
        QVERIFY(clock.take(9 * millisecond));
    }

    void clockForgetsWhatABlockedWindowLost()
    {
        TickClock clock;
        clock.restart(0);
        const qint64 now = 300 * millisecond;
        clock.limit(now);
        int ticks = 0;
        while (clock.take(now))
            ++ticks;
        QCOMPARE(ticks, 4);
        QVERIFY(clock.take(now + millisecond));
    }

    void everyTickRunsOnceAndInOrder()
    {
        Bench bench;
        bench.step->onTick = [&bench](int tick) {
            if (tick == 120)
                bench.session.commandType = commandType::idle;
        };
        bench.session.start(type);
        COMPARE_SOON(bench.session.commandType, int(commandType::idle));
        QCOMPARE(bench.step->ticks, upTo(120));
        COMPARE_SOON(bench.session.tick, 0);
    }

    void ticksGoOnInANestedEventLoop()
    {
        Bench bench;
        QEventLoop box;
        bench.step->onTick = [&](int tick) {
            if (tick == 3)
                box.exec();
            if (tick == 60)
                box.quit();
            if (tick == 80)
                bench.session.commandType = commandType::idle;
        };
        bench.session.start(type);
        COMPARE_SOON(bench.session.commandType, int(commandType::idle));
        QCOMPARE(bench.step->ticks, upTo(80));
    }

    void blockedWindowNeverRunsMoreThanFourTicksAtOnce()
    {
        Bench bench;
        int passes = 0;
        QVector<int> passOfTick;
        QTimer passCounter;
        connect(&passCounter, &QTimer::timeout, this, [&passes] { ++passes; });
        passCounter.start(0);
        bench.step->onTick = [&](int tick) {
            passOfTick.append(passes);
            if (tick == 10)
                QThread::msleep(50);
            if (tick == 40)
                bench.session.commandType = commandType::idle;
        };
        bench.session.start(type);
        COMPARE_SOON(bench.session.commandType, int(commandType::idle));
        for (int i = 4; i < passOfTick.size(); ++i)
            QVERIFY(passOfTick.at(i) > passOfTick.at(i - 4));
    }

    void linksAreReadBeforeTicksAreJudged()
    {
        Bench bench;
        int readsAtFirstTick = 0;
        bench.step->onTick = [&](int tick) {
            if (tick == 1)
                readsAtFirstTick = bench.reads;
            bench.session.commandType = commandType::idle;
        };
        bench.session.start(type);
        COMPARE_SOON(bench.step->ticks.size(), 1);
        QCOMPARE(readsAtFirstTick, 1);
    }

    void exchangeAfterAPauseBeginsWithOneTick()
    {
        Bench bench;
        runEventLoop(30);
        bool isSamePass = false;
        int ticksInFirstPass = 0;
        bench.step->onTick = [&](int tick) {
            if (tick == 1) {
                isSamePass = true;
                QMetaObject::invokeMethod(
                    &bench.heartbeat, [&] { isSamePass = false; }, Qt::QueuedConnection);
            }
            ticksInFirstPass += isSamePass ? 1 : 0;
            if (tick == 20)
                bench.session.commandType = commandType::idle;
        };
        bench.session.start(type);
        COMPARE_SOON(bench.session.commandType, int(commandType::idle));
        QCOMPARE(ticksInFirstPass, 1);
    }

    void waitsCountFromTheEndOfTheFirstTick()
    {
        Bench bench;
        QElapsedTimer sinceFirst;
        qint64 wait = 0;
        bench.step->onTick = [&](int tick) {
            if (tick == 1) {
                QThread::msleep(20); // a port that opens slowly
                sinceFirst.start();
            } else {
                wait = sinceFirst.nsecsElapsed();
                bench.session.commandType = commandType::idle;
            }
        };
        bench.session.start(type);
        runEventLoopUntil([&wait] { return wait != 0; });
        QVERIFY(wait >= millisecond);
    }

    void waitsThatBeginInATickAreNotMadeUpFor()
    {
        // A step that sets the tick back sends something and waits for the answer: however late the
        // window is, the answer gets a pass of the event loop for each tick.
        Bench bench;
        QVector<int> passes;
        int pass = 0;
        bench.step->onTick = [&](int tick) {
            if (tick == 3) {
                bench.session.tick = 0;
                QThread::msleep(10);
            }
            passes.append(pass);
            if (passes.size() > 30)
                bench.session.commandType = commandType::idle;
        };
        QTimer everyPass;
        connect(&everyPass, &QTimer::timeout, this, [&pass] { ++pass; });
        everyPass.start(0);
        bench.session.start(type);
        runEventLoopUntil([&bench] { return bench.session.commandType == commandType::idle; });
        // Ticks 3 (which begins a wait) and 1 never share a pass, nor do 1 and 2.
        for (int i = 3; i + 1 < passes.size(); i += 3) {
            QVERIFY(passes.at(i) > passes.at(i - 1));
            QVERIFY(passes.at(i + 1) > passes.at(i));
        }
    }
};

QTEST_GUILESS_MAIN(TestHeartbeat)
#include "tst_heartbeat.moc"
