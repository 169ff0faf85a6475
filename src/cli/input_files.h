#pragma once

#include "cli/failure.h"

#include <QJsonObject>
#include <QString>
#include <QVector>

#include <string>
#include <vector>

class Report;

/// A file that a command works on.
struct InputFile
{
    QString path;
    bool isNamed; ///< by the user, not found in a folder
};

/// `paths` with the plain files of each folder, by name, in its place. What does not exist is
/// listed all the same.
QVector<InputFile> inputFiles(const std::vector<std::string> &paths);

/// Throws a Failure when the user has pressed Ctrl-C.
void checkInterrupt();

/// Why the file at `path`, which breaks off, was not read.
Failure brokenOff(const QString &path);

/// The content of the file at `path`; throws a Failure when it cannot be had, or
/// after Ctrl-C.
QByteArray contentOf(const QString &path);

/// Why the file at `path` was not written.
Failure unwritable(const QString &path);

/// Writes the file at `path` whole, or throws a Failure.
void writeFile(const QString &path, const QByteArray &content);

/// Makes `folder` where it does not exist, or throws a Failure.
void makeFolder(const QString &folder);

/// Tells that the file at `path` was written; `more` of it in JSON.
void tellMade(Report &report, const QString &path, qint64 bytes, QJsonObject more = {});
