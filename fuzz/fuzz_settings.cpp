#include "common/tool_settings.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

/// Any file can be the settings file: its values are read, one is written, and reads back.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, size_t size)
{
    static const QTemporaryDir folder;
    static int files = 0; // a name of its own each time: settings of one name share what was read
    const QString path = folder.filePath(QString("%1.ini").arg(files++));
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
    if (ToolSettings(path).icoFolder() != "/a folder/图")
        qFatal("a setting was lost");
    QFile::remove(path);
    return 0;
}
