#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// No file that the tool works with comes near this size: a larger one was chosen by mistake, and
/// would take all memory.
inline constexpr qint64 maxFileBytes = 1024 * 1024 * 1024;

/// Why a file was not read.
enum class ReadFault { None, Unreadable, TooLarge };

/// What the file at `path` holds; none when it cannot be opened, or is larger than `maxFileBytes`,
/// as `fault` tells then.
std::optional<QByteArray> readFile(const QString &path, ReadFault *fault = nullptr);
