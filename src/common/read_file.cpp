#include "common/read_file.h"

#include <QFile>
#include <QFileInfo>

namespace {

ReadFault read(QFile &file, QByteArray &content)
{
    // Who opens a pipe waits for its other end, and a device may have no end.
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly))
        return ReadFault::Unopened;
    const qint64 size = file.size();
    if (size > maxFileBytes)
        return ReadFault::TooLarge;
    content = file.read(size);
    // Some files of the system have more than they say.
    constexpr qint64 piece = 65536;
    for (QByteArray more; content.size() <= maxFileBytes && !(more = file.read(piece)).isEmpty();)
        content += more;
    if (content.size() > maxFileBytes)
        return ReadFault::TooLarge;
    // Bytes in front of a fault come without an error.
    const bool isWhole = content.size() >= size && file.error() == QFileDevice::NoError;
    return isWhole ? ReadFault::None : ReadFault::Unreadable;
}

} // namespace

std::optional<QByteArray> readFile(const QString &path, ReadFault *fault)
{
    QFile file(path);
    QByteArray content;
    const ReadFault found = read(file, content);
    if (fault)
        *fault = found;
    return found == ReadFault::None ? std::optional(content) : std::nullopt;
}

const Text *messageOf(ReadFault fault)
{
    switch (fault) {
    case ReadFault::Unreadable:
        return &texts::fileNotRead;
    case ReadFault::TooLarge:
        return &texts::fileTooLarge;
    case ReadFault::None:
    case ReadFault::Unopened:
        break;
    }
    return nullptr;
}
