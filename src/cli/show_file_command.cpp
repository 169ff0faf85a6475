#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/input_files.h"
#include "common/ini_text.h"
#include "config/cfg_text.h"
#include "ico/ico_text.h"

#include <QDir>

namespace {

struct Arguments
{
    std::string file;
    std::string folder;
};

/// The groups of `text` as objects of their keys.
QJsonObject json(const QByteArray &text)
{
    QJsonObject groups;
    for (const iniText::Assignment &assignment : iniText::parse(text).assignments) {
        QJsonObject group = groups.value(assignment.group).toObject();
        group.insert(assignment.key, assignment.value);
        groups.insert(assignment.group, group);
    }
    return groups;
}

void print(Report &report, const QString &path, const QByteArray &text)
{
    report.result({{"type", "shown"}, {"file", path}, {"groups", json(text)}},
                  QString::fromUtf8(text.trimmed()));
}

void write(Report &report, const QString &path, const QByteArray &content)
{
    writeFile(path, content);
    tellMade(report, path, content.size());
}

[[noreturn]] void refuse(const QString &path, const QString &fault)
{
    throw Failure{ExitCode::badFile, path + " cannot be shown: " + fault,
                  "CFG and ICO files can be shown."};
}

int showCfg(Report &report, const QString &path, const QString &folder)
{
    const cfgText::Result text = cfgText::fromImage(contentOf(path));
    if (!text.fault.isEmpty())
        refuse(path, text.fault);
    if (folder.isEmpty())
        print(report, path, text.bytes);
    else
        write(report, QDir(folder).filePath(QFileInfo(path).completeBaseName() + ".ini"),
              text.bytes);
    return ExitCode::done;
}

int showIco(Report &report, const QString &path, const QString &folder)
{
    const icoText::Parts parts = icoText::fromLibrary(contentOf(path));
    if (!parts.fault.isEmpty())
        refuse(path, parts.fault);
    if (folder.isEmpty()) {
        print(report, path, parts.text);
        return ExitCode::done;
    }
    const QDir target(folder);
    for (int i = 0; i < parts.pictures.size(); ++i) {
        const icoText::Picture &picture = parts.pictures.at(i);
        writeFile(target.filePath(picture.name), icoText::pngOf(picture.icon));
        report.progress(path, (i + 1) * 100 / parts.pictures.size());
    }
    if (!parts.rest.isEmpty())
        write(report, target.filePath(icoText::restName), parts.rest);
    write(report, target.filePath(icoText::textName), parts.text);
    return ExitCode::done;
}

int show(Report &report, const Arguments &given)
{
    const QString path = arguments::text(given.file);
    const QString folder = arguments::text(given.folder);
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix != "cfg" && suffix != "ico")
        throw Failure{ExitCode::usage, path + " is neither a CFG nor an ICO file",
                      "The suffix of the name says which it is."};
    if (!folder.isEmpty())
        makeFolder(folder);
    return suffix == "cfg" ? showCfg(report, path, folder) : showIco(report, path, folder);
}

} // namespace

void addShowFile(CLI::App &app, Cli &cli)
{
    const auto given = std::make_shared<Arguments>();
    CLI::App *command =
        app.add_subcommand("show-file", "A CFG or ICO file as text and pictures, for k7 make");
    command->add_option("F.CFG|F.ICO", given->file, "The file")->type_name("")->required();
    command
        ->add_option("-o,--output", given->folder,
                     "The folder to write to; printed is the text alone")
        ->type_name("FOLDER");
    command->callback(
        [&cli, given] { cli.setCommand([&cli, given] { return show(cli.report(), *given); }); });
}
