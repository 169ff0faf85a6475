#include "common/tool_settings.h"

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

/// Any file can be the settings file: its values are read, one is written, and reads back.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, size_t size)
{
    static const QTemporaryDir folder;
    static int files = 0; // names of their own each time: settings of one name share what was read
    const QString path = folder.filePath(QString("%1.ini").arg(files++));
    const QString moved = path + "_moved";
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(reinterpret_cast<const char *>(data), static_cast<qint64>(size)) < 0)
        return 0;
    file.close();
    {
        ToolSettings settings(path);
        if (settings.loadResolutions().size() > 1000)
            qFatal("more resolutions than anybody chooses from");
        settings.rememberIcoPath("/a folder/图");
    }
    // Asked for a key of a group, QSettings may look into a subgroup that it has not parsed yet
    // alone.
    if (!QFile::rename(path, moved))
        return 0;
    QSettings parsed(moved, QSettings::IniFormat);
    parsed.setIniCodec("UTF-8");
    parsed.allKeys();
    if (ToolSettings(moved).icoFolder() != "/a folder/图")
        qFatal("a setting was lost");
    QFile::remove(moved);
    return 0;
}
