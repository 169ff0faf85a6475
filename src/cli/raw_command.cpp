#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/exchanges.h"
#include "serial/data_text.h"

#include <memory>

namespace {

int send(Cli &cli, const QString &digits, int milliseconds)
{
    const auto bytes = dataText::fromHex(digits);
    if (!bytes || bytes->isEmpty())
        throw Failure{ExitCode::usage, QString("\"%1\" is not hexadecimal").arg(digits),
                      "Give bytes such as 5AA5 04 83 00 0F 01."};
    Exchanges &module = cli.connection(Cli::Access::Writes);
    QByteArray reply;
    QObject listener;
    QObject::connect(&module.links().at(Link::Uart2), &WatchedLink::received, &listener,
                     [&reply](const QByteArray &received) { reply += received; });
    module.run(
        Link::Uart2, {},
        [&] {
            reply.clear(); // what came before answers something else
            module.engine().sendFreeForm([bytes] { return *bytes; },
                                         milliseconds + Transaction::sendTick);
        },
        milliseconds + Exchanges::usualPatience);
    const QString text = QString::fromLatin1(reply.toHex(' ').toUpper());
    cli.report().result({{"type", "reply"}, {"bytes", text}}, text);
    if (reply.isEmpty())
        cli.report().note("no reply");
    return ExitCode::done;
}

} // namespace

void addRaw(CLI::App &app, Cli &cli)
{
    struct Given
    {
        std::vector<std::string> digits;
        int milliseconds = 100;
    };
    auto *command =
        app.add_subcommand("raw", "Send bytes as they stand, and print what comes back");
    const auto given = std::make_shared<Given>();
    command->add_option("HEX", given->digits, "Hexadecimal digits; blanks do not count")
        ->required();
    command->add_option("--timeout", given->milliseconds, "How long to listen (default 100)")
        ->type_name("MS")
        ->transform(arguments::number(1, 3600000));
    command->callback([&cli, given] {
        cli.setCommand([&cli, given] {
            return send(cli, arguments::texts(given->digits).join(' '), given->milliseconds);
        });
    });
}
