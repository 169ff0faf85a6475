#include "engine/heartbeat.h"
#include "support/event_loop.h"
#include "support/step_bench.h"

namespace {

constexpr int type = 99;
constexpr qint64 millisecond = TickClock::tickNanoseconds;
using Ticks = QVector<int>;

/// A step that does what the test says.
class ScriptedStep final : public Step
{
public:
    explicit ScriptedStep(const Line &line) : Step(type, line) {}
    std::function<void(int tick)> onTick = [](int) {};

    void step() override
    {
        ran.append(session().tick);
        onTick(session().tick);
    }

    Ticks ran;
};

/// A running heartbeat with one scripted step, in a time that passes as the test says.
struct Bench : StepBench
{
    Bench() { heartbeat.start(); }

    /// The ticks that run when `nanoseconds` have passed, and the window looks several times.
    Ticks ticksAfter(qint64 nanoseconds)
    {
        step->ran.clear();
        now += nanoseconds;
        const int looks = reads + 3;
        runEventLoopUntil([this, looks] { return reads >= looks; });
        return step->ran;
    }

    ScriptedStep *step = add<ScriptedStep>(line);
    qint64 now = 0;
    qint64 perReading = 0; // passes whenever the time is read
    int reads = 0;
    Heartbeat heartbeat{
        session, dispatch, [this] { ++reads; }, {[this] { return now += perReading; }, 1}};
};

} // namespace

class TestHeartbeat : public QObject
{
    Q_OBJECT

private slots:
    void ticksFollowTheTime()
    {
        Bench bench;
        int readsAtFirstTick = 0;
        bench.step->onTick = [&](int tick) {
            if (tick == 1)
                readsAtFirstTick = bench.reads;
        };
        bench.now = 30 * millisecond; // an idle window owes nothing
        bench.session.start(type);
        QCOMPARE(bench.ticksAfter(0), Ticks{1});
        QCOMPARE(readsAtFirstTick, 1);
        QCOMPARE(bench.ticksAfter(millisecond - 1), Ticks{});
        QCOMPARE(bench.ticksAfter(1), Ticks{2});
        // A late look makes up for what passed, and the fraction is not lost.
        QCOMPARE(bench.ticksAfter(5 * millisecond / 2), (Ticks{3, 4}));
        QCOMPARE(bench.ticksAfter(millisecond / 2), Ticks{5});
        // What a blocked window lost is.
        QCOMPARE(bench.ticksAfter(300 * millisecond), (Ticks{6, 7, 8, 9}));
        QCOMPARE(bench.ticksAfter(millisecond), Ticks{10});
    }

    void waitsCountFromTheEndOfTheFirstTick()
    {
        Bench bench;
        bench.step->onTick = [&bench](int tick) {
            if (tick == 1)
                bench.now += 20 * millisecond; // a port that opens slowly
        };
        bench.session.start(type);
        QCOMPARE(bench.ticksAfter(0), Ticks{1});
        QCOMPARE(bench.ticksAfter(millisecond - 1), Ticks{});
        QCOMPARE(bench.ticksAfter(1), Ticks{2});
    }

    void waitsThatBeginInATickAreNotMadeUpFor()
    {
        // A step that sets the tick back sends something and waits for the answer: however late the
        // window is, the answer gets a pass of the event loop for each tick.
        Bench bench;
        qint64 sending = 0;
        bench.step->onTick = [&](int tick) {
            if (tick == 3) {
                bench.session.tick = 0;
                bench.now += sending;
            }
        };
        bench.session.start(type);
        QCOMPARE(bench.ticksAfter(0), Ticks{1});
        QCOMPARE(bench.ticksAfter(5 * millisecond / 2), (Ticks{2, 3}));
        QCOMPARE(bench.ticksAfter(millisecond / 2), Ticks{1});
        sending = 10 * millisecond;
        QCOMPARE(bench.ticksAfter(2 * millisecond), (Ticks{2, 3}));
        QCOMPARE(bench.ticksAfter(4 * millisecond), Ticks{1});
        QCOMPARE(bench.ticksAfter(millisecond), Ticks{2});
    }

    void exchangeThatATickStartsWaitsForItsOwnLook()
    {
        Bench bench;
        bench.step->onTick = [&bench](int tick) {
            if (tick == 2)
                bench.session.takeOver(type);
        };
        bench.session.start(type);
        QCOMPARE(bench.ticksAfter(0), Ticks{1});
        QCOMPARE(bench.ticksAfter(4 * millisecond), (Ticks{2, 3}));
    }

    void ticksGoOnInANestedEventLoop()
    {
        Bench bench;
        bench.perReading = millisecond;
        Ticks expected;
        bench.step->onTick = [&](int tick) {
            expected.append(expected.size() + 1);
            if (tick == 3) // a box, until tick 60
                runEventLoopUntil([&expected] { return expected.size() == 60; });
            if (tick == 80)
                bench.session.commandType = commandType::idle;
        };
        bench.session.start(type);
        COMPARE_SOON(bench.step->ran.size(), 80);
        QCOMPARE(bench.step->ran, expected);
        COMPARE_SOON(bench.session.tick, 0);
    }
};

QTEST_GUILESS_MAIN(TestHeartbeat)
#include "tst_heartbeat.moc"
