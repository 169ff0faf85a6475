#pragma once

#include "common/texts.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// No file that the tool works with comes near this size: a larger one was chosen by mistake, and
/// would take all memory.
inline constexpr qint64 maxFileBytes = 1024 * 1024 * 1024;

/// Why a file was not read.
enum class ReadFault {
    None,
    Unopened,   ///< it is missing, forbidden, or no plain file
    Unreadable, ///< it breaks off: fewer bytes came than it has
    TooLarge    ///< larger than `maxFileBytes`
};

/// All that the file at `path` holds; none of it otherwise, and `fault` tells why.
std::optional<QByteArray> readFile(const QString &path, ReadFault *fault = nullptr);

/// What the window says of `fault`: nothing of a file that could not be opened, which is wanted.
const Text *messageOf(ReadFault fault);
