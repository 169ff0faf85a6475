// 800 ticks against the wall clock, and what the idle window costs.

#include "app/dialog.h"
#include "bench/measure.h"
#include "engine/engine.h"
#include "serial/qt_serial_link.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <cmath>

namespace {

constexpr int measuredTicks = 800;

/// Takes the time from its first tick to 800 ticks later.
class TimedStep final : public Step
{
public:
    explicit TimedStep(const Line &line) : Step(99, line) {}

    void start() { session().start(commandType()); }
    void step() override
    {
        if (session().tick == 1)
            m_time.start();
        if (session().tick != 1 + measuredTicks)
            return;
        milliseconds.append(static_cast<double>(m_time.nsecsElapsed()) * 1e-6);
        end(Outcome::Done);
        QCoreApplication::quit();
    }

    QVector<double> milliseconds;

private:
    QElapsedTimer m_time;
};

class SilentNotices final : public Notices
{
    void warn(const Text &, const Text *, const QString &) override {}
};

void measureTicks()
{
    QtSerialLink uart;
    QtSerialLink ed2;
    SilentNotices notices;
    Engine engine(uart, ed2, notices);
    TimedStep &step = engine.add(std::make_unique<TimedStep>(engine.uart()));
    engine.start();

    double sum = 0;
    double worst = 0;
    constexpr int runs = 12;
    for (int i = 0; i < runs; ++i) {
        step.start();
        QCoreApplication::exec();
        const double error = std::abs(step.milliseconds.last() - measuredTicks);
        sum += error;
        worst = qMax(worst, error);
    }
    measure::report("PERF_TICK_MEAN_MS", sum / runs, 1.0);
    measure::report("PERF_TICK_WORST_MS", worst, 5.0);
}

/// Prints the processor time of five seconds of the event loop, after one to settle.
int idle()
{
    double before = 0;
    QTimer::singleShot(1000, [&before] { before = measure::threadSeconds(); });
    QTimer::singleShot(6000, [&before] {
        std::printf("%f\n", measure::threadSeconds() - before);
        QCoreApplication::quit();
    });
    return QApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setStyle("Fusion");
    if (argc > 1 && QByteArray(argv[1]) == "tool") {
        Dialog dialog;
        dialog.show();
        return idle();
    }
    if (argc > 1) {
        QTimer timer;
        timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer, &QTimer::timeout, [] {});
        timer.start(1);
        return idle();
    }

    measureTicks();
    QVector<double> ratios;
    for (int i = 0; i < 3; ++i)
        ratios.append(measure::inNewProcess("tool") / measure::inNewProcess("timer"));
    measure::report("PERF_TICK_IDLE", measure::median(ratios), 1.15);
    return 0;
}
