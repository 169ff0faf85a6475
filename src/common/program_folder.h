#pragma once

#include <QCoreApplication>
#include <QString>

/// The folder of the tool's own files (settings and what belongs beside the executable): the folder
/// of the executable, or the user's own data folder where that one cannot be written, as in an
/// installation for the whole system. The folder exists afterwards if it can be made.
QString programFolder(const QString &executableFolder = QCoreApplication::applicationDirPath());
