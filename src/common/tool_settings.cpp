#include "common/tool_settings.h"

#include <QVariant>

#include <array>

namespace {

const QString icoKey = QStringLiteral("DefaultPath/icoDefaultPath");
const QString fontKey = QStringLiteral("DefaultPath/fontDefaultPath");
const QString imageKey = QStringLiteral("DefaultPath/imageDefaultPath");
const QString countKey = QStringLiteral("Resolution/N");

constexpr std::array<const char *, 23> defaultResolutions{
    "320X240", "240X320",  "480X272",  "272X480",  "640X480",  "480X640",  "800X480",  "480X800",
    "800X600", "600X800",  "512X480",  "480X512",  "512X300",  "300X512",  "400X400",  "640X512",
    "512X640", "1024X600", "600X1024", "1024X768", "768X1024", "1366X768", "768X1366",
};

/// More entries than this are a damaged file, not a list that anybody chooses from.
constexpr int maxResolutions = 1000;

QString resolutionKey(int index)
{
    return QString("Resolution/R%1").arg(index);
}

} // namespace

ToolSettings::ToolSettings(const QString &file) : m_store(file, QSettings::IniFormat)
{
    m_store.setIniCodec("UTF-8");
    m_icoFolder = text(icoKey);
    m_fontFolder = text(fontKey);
    m_imageFolder = text(imageKey);
}

void ToolSettings::rememberIcoPath(const QString &path)
{
    m_icoFolder = path;
    m_store.setValue(icoKey, path);
}

void ToolSettings::rememberFontFiles(const QStringList &paths)
{
    m_fontFolder = paths.value(0);
    m_store.setValue(fontKey, paths);
}

void ToolSettings::rememberImagePath(const QString &path)
{
    m_imageFolder = path;
    m_store.setValue(imageKey, path);
}

void ToolSettings::rememberImageFiles(const QStringList &paths)
{
    m_imageFolder = paths.value(0);
    m_store.setValue(imageKey, paths);
}

QStringList ToolSettings::loadResolutions()
{
    const int count = m_store.value(countKey).toInt();
    QStringList resolutions;
    for (int i = 0; i < qMin(count, maxResolutions); ++i)
        resolutions.append(text(resolutionKey(i)));
    if (count == 0) {
        m_store.setValue(countKey, static_cast<int>(defaultResolutions.size()));
        int index = 0;
        for (const char *resolution : defaultResolutions)
            setText(resolutionKey(index++), resolution);
    }
    return resolutions;
}
