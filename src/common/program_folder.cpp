#include "common/program_folder.h"

#include <QDir>
#include <QStandardPaths>
#include <QTemporaryFile>

QString programFolder(const QString &executableFolder)
{
    // Only a try tells: permissions alone say nothing about read-only disks and protected folders.
    if (QTemporaryFile(executableFolder + "/XXXXXX").open())
        return executableFolder;
    const QString own = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    QDir().mkpath(own);
    return own;
}
