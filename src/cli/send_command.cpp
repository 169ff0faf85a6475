#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/exchanges.h"
#include "cli/update.h"
#include "common/whole_number.h"

#include <QFile>

#include <memory>

namespace {

using Kind = ProjectFile::Kind;

struct Given
{
    std::vector<std::string> files;
    std::string kind;
    std::string link;
    std::string size;
    Update::Choice choice;
};

struct NumberedFile
{
    QString path;
    std::optional<int> number;
};

/// FILE[=NUMBER]; the name of a file may have such an end of its own.
NumberedFile numberedFile(const QString &text)
{
    const int at = text.lastIndexOf('=');
    const auto number = wholeNumber(text.mid(at + 1));
    if (at <= 0 || !number || QFile::exists(text))
        return {text, std::nullopt};
    return {text.left(at), number};
}

/// The kind that --as and --link make of a file; none leaves it to the name of the file.
std::optional<Kind> kindOf(const Given &given, const QString &path)
{
    std::optional<Kind> kind = Project::kindOf(path.section('/', -1));
    for (const Kind each : {Kind::Flash, Kind::Picture, Kind::Bmp, Kind::Icon, Kind::Os})
        if (kindName(each) == arguments::text(given.kind))
            kind = each;
    if (!kind || given.link.empty())
        return kind;
    const bool overEd2 = given.link == "ed2";
    if (*kind == Kind::Flash && !overEd2)
        return Kind::Icon;
    if (*kind == Kind::Picture && !overEd2)
        return Kind::Bmp;
    const bool isOnEd2 = *kind == Kind::Flash || *kind == Kind::Picture;
    if (isOnEd2 != overEd2)
        throw Failure{ExitCode::usage, QString("%1 does not go over ED2").arg(path),
                      "Over ED2 go --as flash and --as picture."};
    return kind;
}

int send(Cli &cli, const Given &given)
{
    Project project(cli.device().model, cli.screen(arguments::text(given.size)));
    for (const QString &text : arguments::texts(given.files)) {
        const NumberedFile file = numberedFile(text);
        project.add(file.path, kindOf(given, file.path), file.number);
    }
    Exchanges &module =
        cli.connection(given.choice.dryRun ? Cli::Access::Reads : Cli::Access::Writes);
    return Update(module, cli.report(), project.files(), given.choice).run();
}

} // namespace

void addSend(CLI::App &app, Cli &cli)
{
    auto *command = app.add_subcommand("send", "Send what differs of single files, and check it");
    const auto given = std::make_shared<Given>();
    command
        ->add_option("FILE[=NUMBER]", given->files,
                     "Its number is at the start of its name if not given")
        ->required()
        ->type_name("");
    command->add_option("--as", given->kind, "flash, picture, bmp, icon or os")
        ->type_name("KIND")
        ->check(CLI::IsMember({"flash", "picture", "bmp", "icon", "os"}));
    command->add_option("--link", given->link, "ed2 or uart2")
        ->type_name("LINK")
        ->check(CLI::IsMember({"ed2", "uart2"}));
    command->add_option("--size", given->size, "Of the screen, to which pictures are converted")
        ->type_name("WxH");
    given->choice.addOptions(*command);
    command->callback(
        [&cli, given] { cli.setCommand([&cli, given] { return send(cli, *given); }); });
}
