#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/each_device.h"
#include "cli/interrupt.h"

#include <CLI/CLI.hpp>

#include <QGuiApplication>
#include <QTextCodec>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

constexpr char description[] =
    "Talks to a K7 display module, and keeps a project on it up to date.";
constexpr char exitCodes[] =
    "Exit codes: 0 done or equal; 1 differs (check, --dry-run); 2 usage; 3 a file is missing,\n"
    "damaged or cannot be written; 4 a port is absent, busy or forbidden, or leads to another\n"
    "module; 5 the module did not answer or went away; 6 sent, and the check still differs;\n"
    "130 interrupted.";

/// Programs without a locale, as in containers, work on files with names in UTF-8 all the same.
void useUtf8WithoutLocale()
{
    constexpr int usAscii = 3; // its number in the register of character sets
    if (QTextCodec::codecForLocale()->mibEnum() == usAscii)
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

/// What the command line came to: the end of the program, or a command to run.
int refusal(const CLI::App &app, const CLI::ParseError &error, bool isJson)
{
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
        return app.exit(error);
    Report report;
    Report::Settings settings;
    settings.format = isJson ? Report::Format::Json : Report::Format::Text;
    report.configure(settings);
    return report.fail(ExitCode::usage, console::decoded(error.what()).trimmed(),
                       "See `k7 --help`, or `k7 COMMAND --help`.");
}

bool wantsJson(int argc, char *argv[])
{
    return std::any_of(argv, argv + argc,
                       [](const char *each) { return std::strcmp(each, "--json") == 0; });
}

std::unique_ptr<QCoreApplication> makeApplication(int &argc, char *argv[], bool drawsText)
{
    if (!drawsText)
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", console::platform);
    return std::make_unique<QGuiApplication>(argc, argv);
}

/// Qt's own remarks are not for users.
void tellCritical(QtMsgType type, const QMessageLogContext & /*context*/, const QString &text)
{
    if (type == QtCriticalMsg || type == QtFatalMsg)
        console::print(stderr, text + '\n');
}

} // namespace

int main(int argc, char *argv[])
{
    qInstallMessageHandler(tellCritical);
    CLI::App app{description, "k7"};
    app.set_version_flag("--version", "k7 " K7_VERSION, "Print the version and exit");
    app.footer(exitCodes);
    app.require_subcommand(0, 1);
    app.fallthrough();
    Cli cli;
    cli.addOptions(app);
    addCommands(app, cli);
    try {
        app.parse(console::words(argc, argv));
    } catch (const CLI::ParseError &error) {
        return refusal(app, error, wantsJson(argc, argv));
    }
    cli.applyOptions();
    const auto application = makeApplication(argc, argv, cli.drawsText());
    useUtf8WithoutLocale();
    interrupt::watch();
    if (cli.deviceNames().size() > 1)
        return runOnEachDevice(cli.deviceNames(), application->arguments().mid(1), cli.report());
    return cli.runCommand();
}
