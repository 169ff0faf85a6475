#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/exchanges.h"
#include "cli/memory.h"
#include "serial/device_values.h"

namespace {

/// What the module reports, as a line of text and a member of the JSON object each.
struct Fact
{
    const char *key;
    const char *label;
    deviceValues::Block block;
    QJsonValue (*value)(const FrameBuilder &mirrors);
    const char *unit;
};

QJsonValue versionOf(const FrameBuilder &mirrors)
{
    return deviceValues::versionText(mirrors);
}

QJsonValue idOf(const FrameBuilder &mirrors)
{
    return deviceValues::deviceIdText(mirrors);
}

QJsonValue voltageOf(const FrameBuilder &mirrors)
{
    return deviceValues::millivolts(mirrors);
}

QJsonValue pictureOf(const FrameBuilder &mirrors)
{
    return mirrors.vpAt(deviceValues::picture.address);
}

QJsonValue lightOf(const FrameBuilder &mirrors)
{
    return mirrors.vpAt(deviceValues::ledConfig.address) >> 8;
}

QJsonValue standbyLightOf(const FrameBuilder &mirrors)
{
    return mirrors.vpAt(deviceValues::ledConfig.address) & 0xFF;
}

QJsonValue lightTimeOf(const FrameBuilder &mirrors)
{
    return mirrors.vpAt(deviceValues::ledConfig.address + 1);
}

QJsonValue folderOf(const FrameBuilder &mirrors)
{
    return deviceValues::sdNameText(mirrors);
}

/// Bit `bit` of the configuration, which is the second word of its block.
template<int bit>
QJsonValue isConfigured(const FrameBuilder &mirrors)
{
    return (mirrors.vpAt(deviceValues::config.address + 1) >> bit & 1) != 0;
}

QJsonValue directionOf(const FrameBuilder &mirrors)
{
    return (mirrors.vpAt(deviceValues::config.address + 1) & 3) * 90;
}

constexpr Fact facts[] = {
    {"version", "version", deviceValues::version, versionOf, ""},
    {"deviceId", "device ID", deviceValues::deviceId, idOf, ""},
    {"millivolts", "voltage", deviceValues::voltage, voltageOf, " mV"},
    {"picture", "picture", deviceValues::picture, pictureOf, ""},
    {"backlight", "backlight", deviceValues::ledConfig, lightOf, " %"},
    {"standbyBacklight", "in standby", deviceValues::ledConfig, standbyLightOf, " %"},
    {"standbySeconds", "standby after", deviceValues::ledConfig, lightTimeOf, " s"},
    {"sdFolder", "SD folder", deviceValues::sdName, folderOf, ""},
    {"pages128", "pages of 128", deviceValues::config, isConfigured<6>, ""},
    {"loadsFile22", "loads file 22", deviceValues::config, isConfigured<5>, ""},
    {"sdOpen", "SD open", deviceValues::config, isConfigured<4>, ""},
    {"touchVoice", "touch voice", deviceValues::config, isConfigured<3>, ""},
    {"touchLight", "touch light", deviceValues::config, isConfigured<2>, ""},
    {"direction", "direction", deviceValues::config, directionOf, " degrees"},
};

QString textOf(const QJsonValue &value)
{
    return value.isBool() ? (value.toBool() ? "yes" : "no") : value.toVariant().toString();
}

int showInfo(Cli &cli)
{
    Exchanges &module = cli.connection();
    QJsonObject json{{"type", "info"}};
    QStringList lines;
    int readAddress = -1;
    for (const Fact &fact : facts) {
        if (fact.block.address != readAddress)
            memory::readVp(module, fact.block.address, fact.block.words);
        readAddress = fact.block.address;
        const QJsonValue value = fact.value(module.engine().mirrors());
        json.insert(fact.key, value);
        lines.append(QString("%1 %2%3").arg(fact.label, -14).arg(textOf(value), fact.unit));
    }
    cli.report().result(json, lines.join('\n'));
    return ExitCode::done;
}

} // namespace

void addInfo(CLI::App &app, Cli &cli)
{
    auto *command = app.add_subcommand("info", "Tell what the module says of itself");
    command->callback([&cli] { cli.setCommand([&cli] { return showInfo(cli); }); });
}
