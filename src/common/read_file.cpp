#include "common/read_file.h"

#include <QFile>

std::optional<QByteArray> readFile(const QString &path, ReadFault *fault)
{
    QFile file(path);
    ReadFault found = ReadFault::None;
    if (!file.open(QIODevice::ReadOnly))
        found = ReadFault::Unreadable;
    else if (file.size() > maxFileBytes)
        found = ReadFault::TooLarge;
    if (fault)
        *fault = found;
    return found == ReadFault::None ? std::optional(file.read(file.size())) : std::nullopt;
}
