#include "common/program_folder.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

QString programFolder(const QString &executableFolder)
{
    if (QFileInfo(executableFolder).isWritable())
        return executableFolder;
    const QString own = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    QDir().mkpath(own);
    return own;
}
