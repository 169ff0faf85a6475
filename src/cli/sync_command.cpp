#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/update.h"

#include <memory>

namespace {

struct Given
{
    std::string folder = ".";
    std::string size;
    std::string glob;
    Update::Choice choice;
};

int sync(Cli &cli, const Given &given)
{
    const QString folder = arguments::text(given.folder);
    cli.useProject(folder);
    Project project(cli.device().model, cli.screen(arguments::text(given.size)));
    project.addFolder(folder, arguments::text(given.glob), false);
    for (const Project::LeftOut &file : project.leftOut())
        cli.report().result({{"type", "file"},
                             {"file", file.name},
                             {"status", "left out"},
                             {"reason", file.reason}},
                            QString("%1 %2: %3").arg("left out", -14).arg(file.name, file.reason));
    if (project.files().isEmpty())
        throw Failure{ExitCode::badFile, QString("%1 has no file for a module").arg(folder),
                      "Files begin with their number, such as 5_start.png, or k7.ini gives it."};
    return Update(cli, project.files(), given.choice).run();
}

} // namespace

void addSync(CLI::App &app, Cli &cli)
{
    auto *command =
        app.add_subcommand("sync", "Send what differs of the project in FOLDER, and check it");
    const auto given = std::make_shared<Given>();
    command->add_option("FOLDER", given->folder, "The current one if not given");
    command->add_option("--size", given->size, "Of the screen, to which pictures are converted")
        ->type_name("WxH");
    given->choice.addOptions(*command);
    command->add_option("--only", given->glob, "Only files whose name matches")->type_name("GLOB");
    command->callback(
        [&cli, given] { cli.setCommand([&cli, given] { return sync(cli, *given); }); });
}
