// The timing of ED2 downloads, as the module sees it.

#include "bench/measure.h"
#include "download/downloads.h"
#include "engine/engine.h"
#include "serial/qt_serial_link.h"
#include "simulator/pseudo_terminal.h"

#include <QElapsedTimer>

#include <cmath>

namespace {

class SilentNotices final : public Notices
{
    void warn(const Text &, const Text *, const QString &) override { QCoreApplication::quit(); }
};

/// Arrival times in milliseconds of handshakes and of the first byte behind each.
struct Arrivals
{
    QVector<double> handshakes;
    QVector<double> data;
};

/// Downloads five small blocks and notes when they arrive.
Arrivals download(BlockDownload &(*step)(Downloads &), const BlockDownload::Kind &kind, int endTick)
{
    k7::PseudoTerminal terminal;
    terminal.open();
    QtSerialLink uart;
    QtSerialLink ed2;
    SilentNotices notices;
    Engine engine(uart, ed2, notices);
    engine.useUart({});
    engine.useEd2({terminal.path(), 6250000});
    Downloads downloads(engine);
    engine.start();

    Arrivals arrivals;
    QElapsedTimer time;
    time.start();
    QObject::connect(&terminal, &k7::PseudoTerminal::received, &terminal,
                     [&](const QByteArray &bytes) {
                         const double now = static_cast<double>(time.nsecsElapsed()) * 1e-6;
                         const bool isHandshake = bytes.startsWith(kind.handshake);
                         (isHandshake ? arrivals.handshakes : arrivals.data).append(now);
                         if (isHandshake)
                             terminal.write("OK");
                     });
    step(downloads).start(QVector<BlockDownload::Block>(5, {1, "block"}), endTick);
    QCoreApplication::exec();
    return arrivals;
}

void measureKind(const char *name, BlockDownload &(*step)(Downloads &),
                 const BlockDownload::Kind &kind, int endTick)
{
    const Arrivals arrivals = download(step, kind, endTick);
    double worst = 0;
    int late = 0;
    int waits = 0;
    const auto judge = [&](double wait, int expected) {
        const double error = std::abs(wait - expected);
        worst = qMax(worst, error);
        late += error > 1.5 ? 1 : 0;
        ++waits;
    };
    for (int i = 0; i < qMin(arrivals.handshakes.size(), arrivals.data.size()); ++i) {
        judge(arrivals.data.at(i) - arrivals.handshakes.at(i), kind.checkTick - 1);
        if (i > 0)
            judge(arrivals.handshakes.at(i) - arrivals.handshakes.at(i - 1), endTick);
    }
    std::printf("# %s: %d of %d waits more than 1.5 ms off\n", name, late, waits);
    measure::report(name, worst, 5.0);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    measureKind(
        "PERF_FONT_BLOCKS_WORST_MS",
        [](Downloads &downloads) -> BlockDownload & { return downloads.fonts; },
        BlockDownload::fonts(), BlockDownload::fontEndTick);
    measureKind(
        "PERF_PICTURES_WORST_MS",
        [](Downloads &downloads) -> BlockDownload & { return downloads.pictures; },
        BlockDownload::pictures(), 480 * 272 / 313 + 500);
    return 0;
}
