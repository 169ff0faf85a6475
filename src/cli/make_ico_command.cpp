#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/input_files.h"
#include "common/read_file.h"
#include "ico/ico_library.h"
#include "ico/ico_manager.h"
#include "ico/ico_text.h"

#include <QDir>
#include <QMap>

namespace {

struct Arguments
{
    std::vector<std::string> pictures;
    std::string output;
    bool adds = false;
    bool replaces = false;
};

/// The text of a library, where `argument` is one or is a folder with one; null otherwise.
QString libraryText(const std::string &argument)
{
    const QFileInfo path(arguments::text(argument));
    if (path.isDir()) {
        const QString text = QDir(path.filePath()).filePath(icoText::textName);
        return QFileInfo::exists(text) ? text : QString();
    }
    return path.suffix().compare("ini", Qt::CaseInsensitive) == 0 ? path.filePath() : QString();
}

int makeFromText(Report &report, const QString &text, const Arguments &given)
{
    if (given.pictures.size() > 1 || given.adds || given.replaces)
        throw Failure{ExitCode::usage, text + " describes a whole library",
                      "Name it alone, without --add and --replace."};
    const QDir folder = QFileInfo(text).dir();
    const icoText::Library library =
        icoText::toLibrary(contentOf(text), [&folder](const QString &name) {
            return readFile(folder.filePath(name)).value_or(QByteArray());
        });
    if (!library.fault.isEmpty())
        throw Failure{ExitCode::badFile, text + ": " + library.fault,
                      "Correct the text or the picture; nothing was written."};
    const QString output = arguments::text(given.output);
    writeFile(output, library.bytes);
    tellMade(report, output, library.bytes.size(), {{"icons", library.icons}});
    return ExitCode::done;
}

/// The pictures that were `named`; of folders those that the window would take.
QStringList picturePaths(const std::vector<std::string> &named)
{
    QStringList paths;
    for (const QString &path : arguments::texts(named)) {
        if (QFileInfo(path).isDir())
            paths += IcoManager::picturesIn(path).value_or(QStringList());
        else
            paths.append(path);
    }
    return paths;
}

/// Nothing is left out without a word: a library that lacks an icon is noticed on the module only.
void check(Report &report, const IcoManager &manager)
{
    if (!manager.skipped().isEmpty()) {
        const QString &path = manager.skipped().first();
        contentOf(path); // tells what is wrong with the file itself
        throw Failure{ExitCode::badFile, path + " is no picture that can be used",
                      "Replace it or leave it out; nothing was written."};
    }
    if (!manager.misplaced().isEmpty())
        throw Failure{ExitCode::badFile,
                      manager.misplaced().first() + " begins with a number above 32767",
                      "Rename it; nothing was written."};
    QMap<int, QString> names;
    for (const IcoManager::Picture &picture : manager.pictures()) {
        QString &first = names[picture.icon.position];
        if (!first.isNull())
            report.note(QString("%1 is left out: icon %2 is %3")
                            .arg(picture.name)
                            .arg(picture.icon.position)
                            .arg(first));
        else
            first = picture.name;
        if (picture.position.isEmpty())
            report.note(picture.name + " begins with no number and becomes icon 0");
    }
}

IcoManager::Outcome write(IcoManager &manager, const QString &output, const Arguments &given)
{
    if (given.adds)
        return manager.add(output);
    return given.replaces ? manager.replace(output) : manager.create(output);
}

int makeFromPictures(Report &report, const Arguments &given)
{
    const QString output = arguments::text(given.output);
    IcoManager manager;
    manager.load(picturePaths(given.pictures));
    check(report, manager);
    if (manager.pictures().isEmpty())
        throw Failure{ExitCode::badFile, "there is no picture to make icons of",
                      "ICO, JPG, BMP, GIF and PNG files of folders are taken."};
    switch (write(manager, output, given)) {
    case IcoManager::Outcome::Written:
        break;
    case IcoManager::Outcome::Invalid:
        contentOf(output);
        throw Failure{ExitCode::badFile, output + " is no icon library, or it is damaged",
                      "Leave out --add and --replace to write a new one."};
    case IcoManager::Outcome::TooLarge:
        throw Failure{ExitCode::badFile, "the icons do not fit into one library of 512 MB",
                      "Make several libraries; nothing was written."};
    case IcoManager::Outcome::Unwritable:
        throw unwritable(output);
    }
    QVector<IconRecord> icons;
    const QByteArray library = contentOf(output);
    if (!icoLibrary::read(library, icons))
        throw Failure{ExitCode::badFile, output + " was written, and does not read back",
                      "Check the disk; do not send this library."};
    tellMade(report, output, library.size(), {{"icons", icons.size()}});
    return ExitCode::done;
}

int make(Report &report, const Arguments &given)
{
    for (const std::string &argument : given.pictures) {
        const QString text = libraryText(argument);
        if (!text.isNull())
            return makeFromText(report, text, given);
    }
    return makeFromPictures(report, given);
}

} // namespace

void addMakeIco(CLI::App &make, Cli &cli)
{
    const auto given = std::make_shared<Arguments>();
    CLI::App *command = make.add_subcommand("ico", "An icon library, from pictures");
    command
        ->add_option("PICTURE|FOLDER", given->pictures,
                     "Pictures whose names begin with the numbers of their icons, or folders with "
                     "them, or a library.ini as k7 show-file writes it")
        ->type_name("")
        ->required();
    command->add_option("-o,--output", given->output, "The library")->type_name("FILE")->required();
    CLI::Option *add = command->add_flag("--add", given->adds,
                                         "Put the icons into the free places of the library");
    command
        ->add_flag("--replace", given->replaces,
                   "Put the icons into the library, in place of those with their numbers")
        ->excludes(add);
    command->callback(
        [&cli, given] { cli.setCommand([&cli, given] { return ::make(cli.report(), *given); }); });
}
