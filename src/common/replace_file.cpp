#include "common/replace_file.h"

#include "common/read_file.h"

#include <QFile>
#include <QSaveFile>

namespace {

bool createFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    if (file.write(content) == content.size())
        return true;
    file.remove();
    return false;
}

} // namespace

bool replaceFile(const QString &path, const QByteArray &content)
{
    // Only an old file is worth the time that a safe exchange takes.
    if (!QFile::exists(path))
        return createFile(path, content);
    QSaveFile file(path);
    file.setDirectWriteFallback(true); // where nothing can be put beside it
    // Flushed by hand: the commit takes no notice of a buffer that was written in part.
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() &&
           file.flush() && file.commit();
}

bool overwriteStart(const QString &path, const QByteArray &content)
{
    QByteArray whole = readFile(path).value_or(QByteArray());
    return replaceFile(path, whole.replace(0, content.size(), content));
}
