#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/exchanges.h"
#include "cli/memory.h"
#include "serial/device_values.h"

#include <memory>

namespace {

constexpr int maxWord = 0xFFFF;
constexpr int maxByte = 0xFF;

using arguments::number;
using Numbers = std::vector<int>;

/// Writes the low 16 bits of `words`; tells it as `what`.
int write(Cli &cli, int address, const Numbers &words, const QString &what)
{
    QVector<quint16> low;
    for (const int word : words)
        low.append(static_cast<quint16>(word));
    memory::writeVp(cli.connection(Cli::Access::Writes), address, low);
    cli.report().result({{"type", "command"}, {"text", what}}, {});
    cli.report().detail(what);
    return ExitCode::done;
}

void addPage(CLI::App &app, Cli &cli)
{
    auto *command = app.add_subcommand("page", "Show page N, or tell which one is shown");
    const auto page = std::make_shared<Numbers>();
    command->add_option("N", *page)->expected(0, 1)->transform(number(0, maxWord));
    command->callback([&cli, page] {
        cli.setCommand([&cli, page]() -> int {
            if (!page->empty())
                return write(cli, 0x84, {0x5A01, page->front()},
                             QString("page %1 is shown").arg(page->front()));
            const deviceValues::Block block = deviceValues::picture;
            const int shown = memory::readVp(cli.connection(), block.address, block.words).first();
            cli.report().result({{"type", "page"}, {"page", shown}}, QString::number(shown));
            return ExitCode::done;
        });
    });
}

struct Music
{
    int start = 0;
    int count = 0;
    int volume = 0;
};

void addMusic(CLI::App &app, Cli &cli)
{
    auto *play = app.add_subcommand("play", "Play pieces of music");
    const auto music = std::make_shared<Music>();
    play->add_option("START", music->start, "Number of the first piece")
        ->required()
        ->transform(number(0, maxByte));
    play->add_option("COUNT", music->count, "How many pieces")
        ->required()
        ->transform(number(0, maxByte));
    play->add_option("VOLUME", music->volume)->required()->transform(number(0, maxByte));
    play->callback([&cli, music] {
        cli.setCommand([&cli, music] {
            return write(cli, 0xA0, {music->start << 8 | music->count, music->volume << 8},
                         "music plays");
        });
    });
    app.add_subcommand("stop", "Stop the music")->callback([&cli] {
        cli.setCommand([&cli] { return write(cli, 0xA0, {0, 0}, "music stops"); });
    });
}

struct FlashMove
{
    int flash = 0;
    int vp = 0;
    int length = 0;
};

/// The high byte of its first word says which way.
void addNorKind(CLI::App &nor, Cli &cli, const char *name, const char *help, int direction)
{
    auto *command = nor.add_subcommand(name, help);
    const auto move = std::make_shared<FlashMove>();
    command->add_option("FLASH", move->flash, "Address in the flash, in words")
        ->required()
        ->transform(number(0, 0xFFFFFF));
    command->add_option("VP", move->vp)->required()->transform(number(0, maxWord));
    command->add_option("LENGTH", move->length, "In words")
        ->required()
        ->transform(number(0, maxWord));
    command->callback([&cli, move, direction] {
        cli.setCommand([&cli, move, direction] {
            return write(
                cli, 0x08,
                {direction + (move->flash >> 16), move->flash & 0xFFFF, move->vp, move->length},
                "flash and VP memory are moved");
        });
    });
}

void addNor(CLI::App &app, Cli &cli)
{
    auto *nor = app.add_subcommand("nor", "Move words between NOR flash and VP memory");
    nor->require_subcommand(1);
    addNorKind(*nor, cli, "to-vp", "Read the flash into VP memory", 0x5A00);
    addNorKind(*nor, cli, "from-vp", "Write VP memory to the flash", 0xA500);
}

void addBacklight(CLI::App &app, Cli &cli)
{
    auto *command = app.add_subcommand("backlight", "Set the backlight, or tell how it is set");
    const auto lights = std::make_shared<Numbers>();
    command
        ->add_option("NORMAL STANDBY SECONDS", *lights,
                     "Percent, percent in standby, seconds until standby")
        ->type_name("")
        ->expected(0, 3)
        ->transform(number(0, maxWord));
    command->callback([&cli, lights] {
        cli.setCommand([&cli, lights]() -> int {
            const deviceValues::Block block = deviceValues::ledConfig;
            if (lights->empty()) {
                const QVector<quint16> words =
                    memory::readVp(cli.connection(), block.address, block.words);
                cli.report().result({{"type", "backlight"},
                                     {"normal", words.at(0) >> 8},
                                     {"standby", words.at(0) & maxByte},
                                     {"seconds", words.at(1)}},
                                    QString("%1 %2 %3")
                                        .arg(words.at(0) >> 8)
                                        .arg(words.at(0) & maxByte)
                                        .arg(words.at(1)));
                return ExitCode::done;
            }
            if (lights->size() != 3 || lights->at(0) > maxByte || lights->at(1) > maxByte)
                throw Failure{ExitCode::usage, "the backlight takes three numbers",
                              "They are NORMAL STANDBY SECONDS: percent, percent, seconds."};
            return write(cli, block.address, {lights->at(0) << 8 | lights->at(1), lights->at(2)},
                         "the backlight is set");
        });
    });
}

void addReset(CLI::App &app, Cli &cli)
{
    auto *reset = app.add_subcommand("reset", "Reset the module, or restart its system");
    reset->require_subcommand(1);
    reset->add_subcommand("module", "Reset the K7")->callback([&cli] {
        cli.setCommand([&cli] {
            return write(cli, 0x04, {0x55AA, 0x5AA5}, "the module is reset");
        });
    });
    reset->add_subcommand("system", "Restart the system")->callback([&cli] {
        cli.setCommand([&cli] {
            Exchanges &module = cli.connection(Cli::Access::Writes);
            module.run(Link::Uart2, {}, [&module] { module.engine().resetSystem(); });
            cli.report().result({{"type", "command"}, {"text", "the system restarts"}}, {});
            cli.report().detail("the system restarts");
            return ExitCode::done;
        });
    });
}

} // namespace

void addDevice(CLI::App &app, Cli &cli)
{
    for (const auto add : {addPage, addMusic, addNor, addBacklight, addReset})
        add(app, cli);
}
