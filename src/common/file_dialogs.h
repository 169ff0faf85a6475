#pragma once

#include <QString>
#include <QStringList>

/// Asks the user for files and folders.
class FileDialogs
{
public:
    virtual ~FileDialogs() = default;

    /// An existing file, as openFiles() asks for several. Empty when the user cancels.
    virtual QString openFile(const QString &start, const QString &patterns) = 0;

    /// A file to write, which may exist, starting at `start`. Empty when the user cancels.
    virtual QString saveFile(const QString &start, const QString &patterns) = 0;

    /// An existing folder, starting at `start`. Empty when the user cancels.
    virtual QString openFolder(const QString &caption, const QString &start) = 0;

    /// Existing files, starting at the folder or file `start`. `patterns` are parted by semicolons,
    /// such as "*.bin;*.ICO". Empty when the user cancels.
    virtual QStringList openFiles(const QString &start, const QString &patterns) = 0;
};

/// `patterns`, parted by semicolons, as Qt's own dialog understands them: with semicolons it would
/// show no file at all.
inline QString dialogFilter(const QString &patterns)
{
    return '(' + patterns.split(';', Qt::SkipEmptyParts).join(' ') + ')';
}
