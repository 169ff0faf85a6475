#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/exchanges.h"
#include "cli/memory.h"

#include <QJsonArray>

#include <memory>

namespace {

struct Wanted
{
    int page = 0;
    int address = 0;
    std::vector<int> values;
    bool confirms = false;
};

/// Writes, and finds what was written if that is to be confirmed.
bool write(Exchanges &module, const Wanted &wanted, bool isRegister)
{
    const auto count = static_cast<int>(wanted.values.size());
    if (isRegister) {
        QByteArray bytes;
        for (const int value : wanted.values)
            bytes.append(static_cast<char>(value));
        memory::writeRegisters(module, wanted.page, wanted.address, bytes);
        return !wanted.confirms ||
               memory::readRegisters(module, wanted.page, wanted.address, count) == bytes;
    }
    QVector<quint16> words;
    for (const int value : wanted.values)
        words.append(static_cast<quint16>(value));
    memory::writeVp(module, wanted.address, words);
    return !wanted.confirms || memory::readVp(module, wanted.address, count) == words;
}

int run(Cli &cli, const Wanted &wanted, bool isRegister)
{
    const auto count = static_cast<int>(wanted.values.size());
    const int size = isRegister ? FrameBuilder::registersPerPage : FrameBuilder::vpWords;
    if (wanted.address + count > size)
        throw Failure{ExitCode::usage, "the memory ends before that",
                      QString("Write %1 at most from there.").arg(size - wanted.address)};
    if (!write(cli.connection(Cli::Access::Writes), wanted, isRegister))
        return cli.report().fail(
            ExitCode::stillDiffers, "written, but the module holds something else",
            "Some words and registers act, or change on their own: read them.");
    QJsonObject json{{"type", "written"},
                     {"address", wanted.address},
                     {"count", count},
                     {"confirmed", wanted.confirms}};
    if (isRegister)
        json.insert("page", wanted.page);
    cli.report().result(json, QString());
    cli.report().detail(wanted.confirms ? "written, and read back equal"
                                        : "written, and acknowledged");
    return ExitCode::done;
}

void addKind(CLI::App &write, Cli &cli, bool isRegister)
{
    auto *command = isRegister ? write.add_subcommand("reg", "Registers of a page")
                               : write.add_subcommand("vp", "Words of VP memory");
    const auto wanted = std::make_shared<Wanted>();
    const int size = isRegister ? FrameBuilder::registersPerPage : FrameBuilder::vpWords;
    if (isRegister)
        command->add_option("PAGE", wanted->page)
            ->required()
            ->transform(arguments::number(0, FrameBuilder::registerPages - 1));
    command->add_option("ADDRESS", wanted->address)
        ->required()
        ->transform(arguments::number(0, size - 1));
    command->add_option(isRegister ? "BYTE" : "WORD", wanted->values)
        ->required()
        ->transform(arguments::number(0, isRegister ? 0xFF : 0xFFFF));
    command->add_flag("--confirm", wanted->confirms, "Read back, and compare");
    command->callback([&cli, wanted, isRegister] {
        cli.setCommand([&cli, wanted, isRegister] { return run(cli, *wanted, isRegister); });
    });
}

} // namespace

void addWrite(CLI::App &app, Cli &cli)
{
    auto *command = app.add_subcommand("write", "Write VP words or registers");
    command->require_subcommand(1);
    addKind(*command, cli, false);
    addKind(*command, cli, true);
}
