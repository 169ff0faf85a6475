#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/exchanges.h"
#include "cli/project.h"
#include "cli/transfer.h"

#include <QFileInfo>
#include <QJsonArray>

#include <memory>

namespace {

struct Given
{
    std::vector<std::string> paths;
    std::string size;
};

Project projectOf(Cli &cli, const Given &given)
{
    const QStringList paths = arguments::texts(given.paths);
    if (QFileInfo(paths.first()).isDir())
        cli.useProject(paths.first());
    Project project(cli.device().model, cli.screen(arguments::text(given.size)));
    for (const QString &path : paths) {
        if (QFileInfo(path).isDir())
            project.addFolder(path, {}, true);
        else
            project.add(path, std::nullopt, std::nullopt);
    }
    return project;
}

/// Whether the module holds `file`, as far as a check tells.
bool tell(Report &report, const ProjectFile &file)
{
    QJsonArray units;
    QStringList differing;
    for (const CrcCheckItem &unit : file.units) {
        units.append(QJsonObject{{"unit", unit.name},
                                 {"calculated", unit.calculatedCrc},
                                 {"read", unit.readCrc},
                                 {"equal", unit.isIntact()}});
        if (!unit.isIntact())
            differing.append(
                QString("%1 is %2, not %3").arg(unit.name, unit.readCrc, unit.calculatedCrc));
    }
    QString status = differing.isEmpty() ? "equal" : "differs";
    if (file.units.isEmpty())
        status = "not verifiable";
    QString reason = differing.join(", ");
    if (differing.isEmpty() && !file.units.isEmpty())
        reason = "the module holds it";
    if (file.uncovered > 0)
        reason += QString("%1%2 bytes at its end are covered by no check")
                      .arg(reason.isEmpty() ? "" : "; ")
                      .arg(file.uncovered);
    report.result({{"type", "file"},
                   {"file", file.name},
                   {"kind", kindName(file.kind)},
                   {"number", file.number},
                   {"status", status},
                   {"reason", reason},
                   {"units", units}},
                  QString("%1 %2: %3").arg(status, -14).arg(file.name, reason));
    return differing.isEmpty();
}

int check(Cli &cli, const Given &given)
{
    QVector<ProjectFile> files = projectOf(cli, given).files();
    QVector<CrcCheckItem *> units;
    for (ProjectFile &file : files)
        for (CrcCheckItem &unit : file.units)
            units.append(&unit);
    transfer::compare(cli.connection(), units, "check");
    bool isEqual = true;
    for (const ProjectFile &file : qAsConst(files))
        isEqual = tell(cli.report(), file) && isEqual;
    return isEqual ? ExitCode::done : ExitCode::differs;
}

} // namespace

void addCheck(CLI::App &app, Cli &cli)
{
    auto *command = app.add_subcommand("check", "Tell what of these files the module holds");
    const auto given = std::make_shared<Given>();
    command->add_option("FILE|FOLDER", given->paths)->required()->type_name("");
    command->add_option("--size", given->size, "Of the screen, to which pictures were converted")
        ->type_name("WxH");
    command->callback(
        [&cli, given] { cli.setCommand([&cli, given] { return check(cli, *given); }); });
}
