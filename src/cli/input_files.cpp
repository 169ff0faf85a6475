#include "cli/input_files.h"

#include "cli/arguments.h"
#include "cli/interrupt.h"
#include "cli/report.h"
#include "common/read_file.h"
#include "common/replace_file.h"

#include <QDir>

QVector<InputFile> inputFiles(const std::vector<std::string> &paths)
{
    QVector<InputFile> files;
    for (const QString &path : arguments::texts(paths)) {
        if (!QFileInfo(path).isDir()) {
            files.append({path, true});
            continue;
        }
        for (const QFileInfo &file : QDir(path).entryInfoList(QDir::Files | QDir::NoSymLinks))
            files.append({QDir::cleanPath(file.filePath()), false});
    }
    return files;
}

void checkInterrupt()
{
    if (interrupt::isPending())
        throw Failure{ExitCode::interrupted, "interrupted", {}};
}

Failure brokenOff(const QString &path)
{
    return {ExitCode::badFile, path + " cannot be read to its end",
            "Check the disk or the network; nothing of it is used."};
}

QByteArray contentOf(const QString &path)
{
    checkInterrupt();
    ReadFault fault = ReadFault::None;
    const auto content = readFile(path, &fault);
    if (fault == ReadFault::TooLarge)
        throw Failure{ExitCode::badFile, path + " is larger than 1 GiB",
                      "No file for a module is; name another one."};
    if (fault == ReadFault::Unreadable)
        throw brokenOff(path);
    if (!content) {
        const QFileInfo file(path);
        throw Failure{ExitCode::badFile, path + " cannot be read",
                      !file.exists()  ? "There is no such file; check the path."
                      : file.isFile() ? "Check its permissions."
                                      : "Name a plain file, no pipe, device or folder."};
    }
    return *content;
}

Failure unwritable(const QString &path)
{
    return {ExitCode::badFile, path + " cannot be written",
            "Check the folder, its permissions and the space on the disk."};
}

void writeFile(const QString &path, const QByteArray &content)
{
    if (!replaceFile(path, content))
        throw unwritable(path);
}

void makeFolder(const QString &folder)
{
    if (!QDir().mkpath(folder))
        throw Failure{ExitCode::badFile, "the folder " + folder + " cannot be made",
                      "Check the path and its permissions."};
}

void tellMade(Report &report, const QString &path, qint64 bytes, QJsonObject more)
{
    more.insert("type", "made");
    more.insert("file", path);
    more.insert("bytes", bytes);
    report.result(more, path);
}
