#include "common/tool_settings.h"

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <algorithm>

namespace {

const QString written = "DefaultPath/icoDefaultPath";

/// Whether `key` has the same value in both. Each is asked for it, because on Windows names that
/// differ in case only are one.
bool isSame(const QString &key, const QSettings &before, const QSettings &after)
{
    if (key.compare(written, Qt::CaseInsensitive) == 0)
        return after.value(written) == "/a folder/图";
    // But for the resolutions, and keys that QSettings lists and does not find.
    return key.startsWith("Resolution/", Qt::CaseInsensitive) || key.contains("//") ||
           after.value(key) == before.value(key);
}

void compare(const QString &pathBefore, const QString &pathAfter)
{
    QSettings before(pathBefore, QSettings::IniFormat);
    QSettings after(pathAfter, QSettings::IniFormat);
    for (QSettings *each : {&before, &after})
        each->setIniCodec("UTF-8");
    for (const QString &key : before.allKeys() + after.allKeys() + QStringList(written))
        if (!isSame(key, before, after))
            qFatal("the setting %s was lost or changed in %s", qPrintable(key),
                   qPrintable(pathBefore));
}

} // namespace

/// Any file can be the settings file: its values are read, one is written, and reads back. All else
/// that it says stays.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, size_t size)
{
    // Blanks to the tool, not to QSettings; nobody has them in such a file.
    if (std::any_of(data, data + size, [](quint8 byte) { return byte == '\v' || byte == '\f'; }))
        return 0;
    static const QTemporaryDir folder;
    static int files = 0; // names of their own each time: settings of one name share what was read
    const QString path = folder.filePath(QString("%1.ini").arg(files++));
    const QString before = path + "_before";
    const QString after = path + "_after";
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(reinterpret_cast<const char *>(data), static_cast<qint64>(size)) < 0)
        return 0;
    file.close();
    if (!file.copy(before))
        return 0;
    {
        ToolSettings settings(path);
        if (settings.loadResolutions().size() > 1000)
            qFatal("more resolutions than anybody chooses from");
        settings.rememberIcoPath("/a folder/图");
    }
    if (!QFile::rename(path, after))
        return 0;
    compare(before, after);
    QFile::remove(before);
    QFile::remove(after);
    return 0;
}
