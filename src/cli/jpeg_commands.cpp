#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/exchanges.h"
#include "cli/input_files.h"
#include "common/read_file.h"
#include "common/whole_number.h"
#include "download/jpeg_file.h"

#include <QFileInfo>
#include <QStringList>

#include <memory>

namespace {

int send(Cli &cli, const QString &path, const JpgDownload::Display &display, const QString &done)
{
    ReadFault fault = ReadFault::None;
    const auto content = readFile(path, &fault);
    if (fault == ReadFault::Unreadable)
        throw brokenOff(path);
    if (!content)
        throw Failure{ExitCode::badFile, QString("%1: the file cannot be read").arg(path),
                      "Is the name right, and may you read it?"};
    const Jpeg jpeg = jpegWithin(*content, JpgDownload::maxBytes);
    if (jpeg.bytes.isEmpty())
        throw Failure{ExitCode::badFile,
                      QString("%1: %2").arg(path, jpeg.refusal
                                                      ? jpeg.refusal->in(true).section('\n', 0, 0)
                                                      : QString("the file is empty")),
                      "Save it anew as JPEG of at most 64 KiB."};
    if (!content->startsWith("\xFF\xD8\xFF"))
        throw Failure{ExitCode::badFile, QString("%1: this is no JPEG file").arg(path),
                      "Save the picture as JPEG; another name is not enough."};
    Exchanges &module = cli.connection(Cli::Access::Writes);
    module.run(Link::Uart2, QFileInfo(path).fileName(),
               [&] { module.downloads().jpg.start(jpeg.bytes, [display] { return display; }); });
    cli.report().result({{"type", "command"}, {"text", done}}, {});
    cli.report().detail(done);
    return ExitCode::done;
}

/// The numbers of "X,Y".
JpgDownload::Display placeOf(const QString &text)
{
    const QStringList numbers = text.split(',');
    const auto x = wholeNumber(numbers.value(0), 0, 0xFFFF);
    const auto y = wholeNumber(numbers.value(1), 0, 0xFFFF);
    if (numbers.size() != 2 || !x || !y)
        throw Failure{ExitCode::usage, QString("\"%1\" is no place on the screen").arg(text),
                      "Give it as X,Y, such as --at 0,0."};
    return {0, *x, *y};
}

void addShow(CLI::App &app, Cli &cli)
{
    struct Given
    {
        std::string path;
        std::string place;
    };
    auto *command = app.add_subcommand("show", "Show a JPEG picture at a place on the screen");
    const auto given = std::make_shared<Given>();
    command->add_option("JPEG", given->path)->required()->type_name("");
    command->add_option("--at", given->place, "Its upper left corner")
        ->required()
        ->type_name("X,Y");
    command->callback([&cli, given] {
        cli.setCommand([&cli, given] {
            return send(cli, arguments::text(given->path), placeOf(arguments::text(given->place)),
                        "the picture is shown");
        });
    });
}

void addStore(CLI::App &app, Cli &cli)
{
    struct Given
    {
        std::string path;
        int id = 0;
    };
    auto *command = app.add_subcommand("store", "Store a JPEG picture under a picture ID");
    const auto given = std::make_shared<Given>();
    command->add_option("JPEG", given->path)->required()->type_name("");
    command->add_option("--id", given->id)
        ->required()
        ->type_name("N")
        ->transform(arguments::number(0, 0xFFFF));
    command->callback([&cli, given] {
        cli.setCommand([&cli, given] {
            return send(cli, arguments::text(given->path), {1, given->id, 0},
                        QString("the picture is stored as %1").arg(given->id));
        });
    });
}

} // namespace

void addJpeg(CLI::App &app, Cli &cli)
{
    addShow(app, cli);
    addStore(app, cli);
}
