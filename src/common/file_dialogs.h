#pragma once

#include <QDir>
#include <QFileInfo>
#include <QString>
#include <QStringList>

/// Asks the user for files and folders.
class FileDialogs
{
public:
    virtual ~FileDialogs() = default;

    /// An existing file, as openFiles() asks for several. Empty when the user cancels.
    virtual QString openFile(const QString &start, const QString &patterns) = 0;

    /// A file to write, which may exist, starting at `start`. A name without a suffix gets that of
    /// the first of `patterns`. Empty when the user cancels.
    virtual QString saveFile(const QString &start, const QString &patterns) = 0;

    /// An existing folder, starting at `start`. Empty when the user cancels.
    virtual QString openFolder(const QString &caption, const QString &start) = 0;

    /// Existing files, starting at the folder or file `start`. `patterns` are parted by semicolons,
    /// such as "*.bin;*.ICO". Empty when the user cancels.
    virtual QStringList openFiles(const QString &start, const QString &patterns) = 0;
};

/// Those of `paths` that a dialog with `patterns` would offer.
inline QStringList matching(const QStringList &paths, const QString &patterns)
{
    QStringList found;
    for (const QString &path : paths)
        if (QDir::match(patterns, QFileInfo(path).fileName()) && QFileInfo(path).isFile())
            found.append(path);
    return found;
}

/// `patterns`, parted by semicolons, as Qt's own dialog understands them: with semicolons it would
/// show no file at all.
inline QString dialogFilter(const QString &patterns)
{
    return '(' + patterns.split(';', Qt::SkipEmptyParts).join(' ') + ')';
}
