#include "common/program_folder.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryFile>

QString ProgramFolder::fileToRead(const QString &name) const
{
    const QString ownFile = own + '/' + name;
    return QFile::exists(ownFile) ? ownFile : executable + '/' + name;
}

ProgramFolder findProgramFolder(const QString &executable)
{
    // Only a try tells: permissions alone say nothing about read-only disks and protected folders.
    if (QTemporaryFile(executable + "/XXXXXX").open())
        return {executable, executable};
    const QString own = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    QDir().mkpath(own);
    return {executable, own};
}
