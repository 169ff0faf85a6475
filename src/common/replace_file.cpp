#include "common/replace_file.h"

#include "common/read_file.h"

#include <QFileInfo>
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

Overwritten overwriteStart(const QString &path, const QByteArray &content)
{
    const QFileInfo there(path);
    // A folder, device or pipe holds nothing that could be kept, and is none to be replaced.
    if (there.exists() && !there.isFile())
        return Overwritten::NotWritten;
    const auto old = readFile(path);
    if (!old && there.exists())
        return Overwritten::NotKept;
    QByteArray whole = old.value_or(QByteArray());
    return replaceFile(path, whole.replace(0, content.size(), content)) ? Overwritten::Done
                                                                        : Overwritten::NotWritten;
}
