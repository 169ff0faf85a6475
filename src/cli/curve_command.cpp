#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/exchanges.h"
#include "cli/memory.h"
#include "serial/device_values.h"

#include <memory>

namespace {

using Samples = std::array<QVector<quint16>, FrameBuilder::channels>;

/// The channels of the options "-c CHANNEL SAMPLE...".
Samples samplesOf(const std::vector<std::vector<int>> &given)
{
    Samples samples;
    int count = -1;
    for (const std::vector<int> &each : given) {
        const int channel = each.front();
        if (channel >= FrameBuilder::channels)
            throw Failure{ExitCode::usage, QString("there is no channel %1").arg(channel),
                          "Channels are 0 to 7."};
        QVector<quint16> &words = samples[static_cast<size_t>(channel)];
        if (!words.isEmpty())
            throw Failure{ExitCode::usage, QString("channel %1 comes twice").arg(channel),
                          "Give all samples of a channel behind one -c."};
        for (size_t i = 1; i < each.size(); ++i)
            words.append(static_cast<quint16>(each.at(i)));
        if (words.isEmpty() || (count >= 0 && words.size() != count))
            throw Failure{ExitCode::usage, "each channel needs as many samples as the others",
                          "The module takes one of each in turn."};
        count = words.size();
    }
    return samples;
}

int send(Cli &cli, const Samples &samples)
{
    Exchanges &module = cli.connection(Cli::Access::Writes);
    quint8 mask = 0;
    int channels = 0;
    int count = 0;
    for (int channel = 0; channel < FrameBuilder::channels; ++channel) {
        const int size = samples[static_cast<size_t>(channel)].size();
        if (size == 0)
            continue;
        mask = static_cast<quint8>(mask | 1 << channel);
        ++channels;
        count = size;
    }
    // Nobody acknowledges curves: whether there is a module is found out before.
    memory::readVp(module, deviceValues::version.address, deviceValues::version.words);
    const int atOnce = module.engine().mirrors().maxDataBytes() / 2 / channels;
    for (int from = 0; from < count; from += atOnce) {
        Samples part;
        for (size_t channel = 0; channel < samples.size(); ++channel)
            part[channel] = samples[channel].mid(from, atOnce);
        bool fits = false;
        module.run(Link::Uart2, {}, [&] { fits = module.engine().sendCurve(part, mask); });
        if (!fits)
            throw Failure{ExitCode::usage, "the samples do not fit into a frame",
                          "Send fewer of them at a time."};
    }
    cli.report().result({{"type", "curve"}, {"channels", channels}, {"samples", count}}, {});
    cli.report().detail("sent; the module does not acknowledge curves");
    return ExitCode::done;
}

} // namespace

void addCurve(CLI::App &app, Cli &cli)
{
    auto *command = app.add_subcommand("curve", "Append samples to curves");
    const auto given = std::make_shared<std::vector<std::vector<int>>>();
    command->add_option("-c,--channel", *given, "A channel, 0 to 7, and its samples (repeatable)")
        ->required()
        ->type_name("CHANNEL SAMPLE...")
        ->transform(arguments::number(0, 0xFFFF));
    command->callback(
        [&cli, given] { cli.setCommand([&cli, given] { return send(cli, samplesOf(*given)); }); });
}
