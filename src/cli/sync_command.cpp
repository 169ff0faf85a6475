#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/exchanges.h"
#include "cli/gap.h"
#include "cli/update.h"

#include <QDateTime>
#include <QDir>

#include <memory>
#include <utility>

namespace {

struct Given
{
    std::string folder = ".";
    std::string size;
    std::string glob;
    Update::Choice choice;
    bool watches = false;
};

using States = QMap<QString, QString>;

/// The time and size of each file in `folder`, and of `others`, by its absolute path.
States statesOf(const QString &folder, const QStringList &others)
{
    QFileInfoList files = QDir(folder).entryInfoList(QDir::Files);
    for (const QString &path : others)
        files.append(QFileInfo(path));
    States states;
    for (const QFileInfo &file : qAsConst(files))
        states.insert(
            file.absoluteFilePath(),
            QString("%1 %2").arg(file.lastModified().toMSecsSinceEpoch()).arg(file.size()));
    return states;
}

QStringList pathsOf(const Project &project)
{
    QStringList paths;
    for (const ProjectFile &file : project.files())
        paths.append(file.path);
    return paths;
}

Project projectOf(Cli &cli, const Given &given)
{
    const QString folder = arguments::text(given.folder);
    Project project(cli.device().model, cli.screen(arguments::text(given.size)));
    project.addFolder(folder, arguments::text(given.glob), false);
    return project;
}

int send(Cli &cli, const QVector<ProjectFile> &files, const Given &given)
{
    Exchanges &module =
        cli.connection(given.choice.dryRun ? Cli::Access::Reads : Cli::Access::Writes);
    return Update(module, cli.report(), files, given.choice).run();
}

int sync(Cli &cli, const Given &given)
{
    const QString folder = arguments::text(given.folder);
    cli.useProject(folder);
    const Project project = projectOf(cli, given);
    for (const Project::LeftOut &file : project.leftOut())
        cli.report().result({{"type", "file"},
                             {"file", file.name},
                             {"status", "left out"},
                             {"reason", file.reason}},
                            QString("%1 %2: %3").arg("left out", -14).arg(file.name, file.reason));
    if (project.files().isEmpty())
        throw Failure{ExitCode::badFile, QString("%1 has no file for a module").arg(folder),
                      "Files begin with their number, such as 5_start.png, or k7.ini gives it."};
    return send(cli, project.files(), given);
}

/// Syncs, and then again whenever files have changed and are at rest.
int watch(Cli &cli, const Given &given)
{
    constexpr int betweenLooks = 300; // in milliseconds
    const QString folder = arguments::text(given.folder);
    cli.useProject(folder);
    QStringList paths = pathsOf(projectOf(cli, given));
    States sent = statesOf(folder, paths);
    sync(cli, given);
    Exchanges &module = cli.connection();
    States seen = sent;
    States tried = sent; // what cannot be sent is tried again when something changes
    while (true) {
        module.pause(betweenLooks);
        const States now = statesOf(folder, paths);
        if (now == tried || std::exchange(seen, now) != now)
            continue;
        tried = now;
        try {
            const Project project = projectOf(cli, given);
            paths = pathsOf(project);
            QVector<ProjectFile> changed;
            for (const ProjectFile &file : project.files()) {
                const QString path = QFileInfo(file.path).absoluteFilePath();
                if (sent.value(path) != now.value(path))
                    changed.append(file);
            }
            if (changed.isEmpty() || send(cli, changed, given) == ExitCode::done)
                sent = now;
        } catch (const Failure &failure) {
            if (failure.code == ExitCode::interrupted)
                throw;
            if (!module.links().wasLost()) {
                cli.report().fail(failure.code, failure.cause, failure.remedy);
                continue;
            }
            for (const Link each : {Link::Uart2, Link::Ed2})
                if (module.links().at(each).wasLost())
                    gap::tell(cli.report(), each, module.awaitReturn(each));
            tried = sent;
        }
    }
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
    command->add_flag("--watch", given->watches, "Then send what changes, until Ctrl-C")
        ->excludes(command->get_option("--dry-run"));
    command->callback([&cli, given] {
        cli.setCommand(
            [&cli, given] { return given->watches ? watch(cli, *given) : sync(cli, *given); });
    });
}
