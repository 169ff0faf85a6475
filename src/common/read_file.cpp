#include "common/read_file.h"

#include <QFile>

std::optional<QByteArray> readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > maxFileBytes)
        return std::nullopt;
    return file.read(file.size());
}
