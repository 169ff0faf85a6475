#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/exchanges.h"
#include "cli/gap.h"
#include "cli/memory.h"

#include <QJsonArray>

#include <memory>

namespace {

struct Asked
{
    bool isRegister = false;
    int page = 0;
    int address = 0;
    int count = 1;
    bool isDecimal = false;
    bool isText = false;
    double watchSeconds = 0;
};

/// Eight numbers a line, as the tool's window shows them.
QString numbersText(const QVector<int> &values, int digits, bool isDecimal)
{
    QString text;
    for (int i = 0; i < values.size(); ++i) {
        if (i > 0)
            text += i % 8 == 0 ? '\n' : ' ';
        text +=
            isDecimal
                ? QString::number(values.at(i))
                : "0x" + QString::number(values.at(i), 16).toUpper().rightJustified(digits, '0');
    }
    return text;
}

QByteArray bytesOf(const QVector<int> &values, bool isRegister)
{
    QByteArray bytes;
    for (const int value : values) {
        if (!isRegister)
            bytes.append(static_cast<char>(value >> 8));
        bytes.append(static_cast<char>(value & 0xFF));
    }
    return bytes;
}

QVector<int> values(Exchanges &module, const Asked &asked)
{
    QVector<int> values;
    if (asked.isRegister)
        for (const char byte :
             memory::readRegisters(module, asked.page, asked.address, asked.count))
            values.append(static_cast<quint8>(byte));
    else
        for (const quint16 word : memory::readVp(module, asked.address, asked.count))
            values.append(word);
    return values;
}

void show(Cli &cli, const Asked &asked)
{
    const QVector<int> read = values(cli.connection(), asked);
    const QByteArray bytes = bytesOf(read, asked.isRegister);
    const QString text = QString::fromLocal8Bit(
        bytes.left(static_cast<int>(qstrnlen(bytes, static_cast<uint>(bytes.size())))));
    QJsonArray numbers;
    for (const int value : read)
        numbers.append(value);
    QJsonObject json{{"type", asked.isRegister ? "registers" : "vp"},
                     {"address", asked.address},
                     {"values", numbers}};
    if (asked.isRegister)
        json.insert("page", asked.page);
    if (asked.isText)
        json.insert("text", text);
    cli.report().result(
        json, asked.isText ? text : numbersText(read, asked.isRegister ? 2 : 4, asked.isDecimal));
}

int run(Cli &cli, const Asked &asked)
{
    show(cli, asked);
    Exchanges &module = cli.connection();
    while (asked.watchSeconds > 0) {
        module.pause(static_cast<qint64>(asked.watchSeconds * 1000));
        try {
            show(cli, asked);
        } catch (const Failure &) {
            if (!module.links().wasLost())
                throw;
            gap::tell(cli.report(), Link::Uart2, module.awaitReturn(Link::Uart2));
        }
    }
    return ExitCode::done;
}

void addKind(CLI::App &read, Cli &cli, bool isRegister)
{
    auto *command = isRegister ? read.add_subcommand("reg", "Registers of a page")
                               : read.add_subcommand("vp", "Words of VP memory");
    const auto asked = std::make_shared<Asked>();
    asked->isRegister = isRegister;
    const int size = isRegister ? FrameBuilder::registersPerPage : FrameBuilder::vpWords;
    if (isRegister)
        command->add_option("PAGE", asked->page)
            ->required()
            ->transform(arguments::number(0, FrameBuilder::registerPages - 1));
    command->add_option("ADDRESS", asked->address)
        ->required()
        ->transform(arguments::number(0, size - 1));
    command->add_option("COUNT", asked->count, "1 if not given")
        ->transform(arguments::number(1, size));
    auto *isDecimal = command->add_flag("--dec", asked->isDecimal, "Decimal numbers");
    auto *isText = command->add_flag("--text", asked->isText, "As text, up to its end");
    command->add_flag("--hex", "Hexadecimal numbers (default)")
        ->excludes(isDecimal)
        ->excludes(isText);
    isDecimal->excludes(isText);
    command->add_option("--watch", asked->watchSeconds, "Again and again, until Ctrl-C")
        ->type_name("SECONDS")
        ->check(arguments::seconds(0.1, 86400));
    command->callback([&cli, asked] {
        cli.setCommand([&cli, asked] {
            const int size =
                asked->isRegister ? FrameBuilder::registersPerPage : FrameBuilder::vpWords;
            if (asked->address + asked->count > size)
                throw Failure{ExitCode::usage, "the memory ends before that",
                              QString("Read %1 at most from there.").arg(size - asked->address)};
            return run(cli, *asked);
        });
    });
}

} // namespace

void addRead(CLI::App &app, Cli &cli)
{
    auto *command = app.add_subcommand("read", "Read VP words or registers");
    command->require_subcommand(1);
    addKind(*command, cli, false);
    addKind(*command, cli, true);
}
