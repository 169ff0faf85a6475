#pragma once

#include <QByteArray>
#include <QString>

/// Makes `content` the content of the file at `path`, whole or not at all: an old file stays as it
/// was, and no new one is left, when it cannot be written. False in that case.
bool replaceFile(const QString &path, const QByteArray &content);

/// What became of overwriting a file.
enum class Overwritten {
    Done,
    NotKept,   ///< what the old file holds cannot be had, and would be lost: it was not touched
    NotWritten ///< nor was the old file touched then
};

/// Puts `content` over the start of the file at `path`, likewise whole or not at all; what a longer
/// file holds behind it stays.
Overwritten overwriteStart(const QString &path, const QByteArray &content);
