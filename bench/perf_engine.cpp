// Downloads and a check through the engine alone: how much longer they take than their ticks.

#include "bench/measure.h"
#include "crc/crc_comparison.h"
#include "download/downloads.h"
#include "download/flash_blocks.h"
#include "download/screen_picture.h"
#include "engine/engine.h"
#include "simulator/direct_link.h"
#include "simulator/simulator.h"

#include <QCoreApplication>

namespace {

class SilentNotices final : public Notices
{
    void warn(const Text &, const Text *, const QString &) override {}
};

/// Seconds until what `start` starts has ended.
double run(Engine &engine, const std::function<void()> &start)
{
    QObject context;
    QObject::connect(&engine, &Engine::ended, &context, [] { QCoreApplication::quit(); });
    return measure::seconds(
        [&start] {
            start();
            QCoreApplication::exec();
        },
        1);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    k7::Simulator simulator;
    simulator.start(k7::Way::InProcess);
    k7::DirectLink uart(simulator);
    k7::DirectLink ed2(simulator);
    SilentNotices notices;
    Engine engine(uart, ed2, notices);
    engine.useUart({simulator.uartPath(), 115200, 0x5A, 0xA5, false});
    engine.useEd2({simulator.ed2Path(), 6250000});
    Downloads downloads(engine);
    auto &comparison = engine.add(std::make_unique<CrcComparison>(engine.uart()));
    engine.start();

    const QByteArray file(300000, 'x');
    const QSize size(480, 272);
    const double fonts = run(
        engine, [&] { downloads.fonts.start(flashBlocks(8, file), BlockDownload::fontEndTick); });
    measure::report("PERF_ENGINE_FONT", fonts / (2 * 0.8), 1.02);
    const double pictures = run(engine, [&] {
        downloads.pictures.start({{5, QByteArray(2 * 480 * 272, 'x')}},
                                 screenPicture::endTick(size));
    });
    measure::report("PERF_ENGINE_PICTURE", pictures / (screenPicture::endTick(size) * 1e-3), 1.02);
    const double jpeg = run(engine, [&] {
        downloads.jpg.start(file.left(24000), [] { return JpgDownload::Display{0, 0, 0}; });
    });
    measure::report("PERF_ENGINE_UART2", jpeg / (100 * 29 * 1e-3), 1.05);
    comparison.setItems(crcCheck::unitsOf("8_a.bin", file).items);
    const double check = run(engine, [&] { comparison.start(); });
    measure::report("PERF_ENGINE_CRC", check / (2 * 13 * 1e-3), 1.2);
    return 0;
}
