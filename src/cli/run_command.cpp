#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/input_files.h"
#include "cli/interrupt.h"

#include <QFile>
#include <QProcess>

#include <memory>

namespace {

/// Hands out the lines of a file or of stdin, one after the other, as soon as they are there.
class Lines
{
public:
    explicit Lines(const QString &path)
    {
        m_file.setFileName(path);
        const bool isOpen = path == "-"
                                ? m_file.open(0, QIODevice::ReadOnly | QIODevice::Unbuffered)
                                : m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
        if (!isOpen)
            throw Failure{ExitCode::badFile, QString("%1: the file cannot be read").arg(path),
                          "Is the name right? - stands for the standard input."};
    }

    /// None at the end. Throws a Failure when it is interrupted.
    std::optional<QString> next()
    {
        while (!m_pending.contains('\n')) {
            if (!interrupt::waitForInput(m_file.handle()))
                throw Failure{ExitCode::interrupted, "interrupted", {}};
            // Not as QFile reads, which waits until it has all that was asked for.
            const auto bytes = console::readSome(m_file.handle());
            // A terminal may end a read when it is interrupted.
            if ((!bytes || bytes->isEmpty()) && interrupt::isPending())
                throw Failure{ExitCode::interrupted, "interrupted", {}};
            if (!bytes)
                throw brokenOff(m_file.fileName());
            if (bytes->isEmpty() && m_pending.isEmpty())
                return std::nullopt;
            m_pending += bytes->isEmpty() ? QByteArray("\n") : *bytes;
        }
        const int end = m_pending.indexOf('\n');
        const QString line = QString::fromLocal8Bit(m_pending.left(end)).trimmed();
        m_pending.remove(0, end + 1);
        return line;
    }

private:
    QFile m_file;
    QByteArray m_pending;
};

int runLine(Cli &cli, const QString &line)
{
    CLI::App app{"", "k7"};
    app.require_subcommand(0, 1);
    cli.setCommand({});
    addCommands(app, cli);
    app.remove_subcommand(app.get_subcommand("run"));
    std::vector<std::string> words; // last first, as the parser takes them
    for (const QString &word : QProcess::splitCommand(line))
        words.insert(words.begin(), console::encoded(word));
    try {
        app.parse(words);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
            return app.exit(error);
        return cli.report().fail(ExitCode::usage, console::decoded(error.what()).trimmed(),
                                 "See `k7 --help`.");
    }
    return cli.runCommand();
}

int runAll(Cli &cli, const QString &path)
{
    Lines lines(path);
    int number = 0;
    while (const auto line = lines.next()) {
        ++number;
        if (line->isEmpty() || line->startsWith('#'))
            continue;
        cli.report().detail(QString("line %1: %2").arg(number).arg(*line));
        const int code = runLine(cli, *line);
        if (code != ExitCode::done) {
            cli.report().note(
                QString("k7: %1 ends at line %2: %3").arg(path).arg(number).arg(*line));
            return code;
        }
    }
    return ExitCode::done;
}

} // namespace

void addRun(CLI::App &app, Cli &cli)
{
    auto *command = app.add_subcommand(
        "run", "Run the commands of FILE, one a line, on one connection; - is the standard input");
    const auto path = std::make_shared<std::string>();
    command->add_option("FILE", *path)->required()->type_name("");
    command->callback([&cli, path] {
        cli.setDrawsText(); // a line may make a font
        if (*path == "-")
            cli.setReadsInput();
        cli.setCommand([&cli, path] { return runAll(cli, arguments::text(*path)); });
    });
}
