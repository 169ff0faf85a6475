#pragma once

#include <QCoreApplication>
#include <QString>

/// Where the tool's own files are: settings, and what belongs beside the executable.
struct ProgramFolder
{
    QString executable; ///< the folder of the executable
    /// Where the tool writes: `executable`, or the user's own data folder where that one cannot be
    /// written, as in an installation for the whole system.
    QString own;

    /// The file `name`: the user's own where there is one, otherwise what stands beside the
    /// executable.
    QString fileToRead(const QString &name) const;
};

/// Finds out whether `executable` can be written, by trying: once a start is enough. The user's own
/// folder exists afterwards if it is needed and can be made.
ProgramFolder findProgramFolder(const QString &executable = QCoreApplication::applicationDirPath());
