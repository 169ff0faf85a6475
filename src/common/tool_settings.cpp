#include "common/tool_settings.h"

#include "common/read_file.h"
#include "common/replace_file.h"

#include <QFile>
#include <QVariant>

#include <algorithm>
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

/// `file`, which is made of `prepared` where it is missing; `prepared` where that is impossible.
QString fileToRead(const QString &file, const QString &prepared)
{
    const auto initial = QFile::exists(file) ? std::nullopt : readFile(prepared);
    return initial && !replaceFile(file, *initial) ? prepared : file;
}

QString resolutionKey(int index)
{
    return QString("Resolution/R%1").arg(index);
}

} // namespace

ToolSettings::ToolSettings(const QString &file, const QString &prepared)
    : m_file(file), m_store(fileToRead(file, prepared), QSettings::IniFormat)
{
    m_store.setIniCodec("UTF-8");
    m_icoFolder = text(icoKey);
    m_fontFolder = text(fontKey);
    m_imageFolder = text(imageKey);
}

void ToolSettings::rememberIcoPath(const QString &path)
{
    m_icoFolder = path;
    set({{icoKey, {path}}});
}

void ToolSettings::rememberFontFiles(const QStringList &paths)
{
    m_fontFolder = paths.value(0);
    set({{fontKey, paths}});
}

void ToolSettings::rememberImagePath(const QString &path)
{
    m_imageFolder = path;
    set({{imageKey, {path}}});
}

void ToolSettings::rememberImageFiles(const QStringList &paths)
{
    m_imageFolder = paths.value(0);
    set({{imageKey, paths}});
}

QStringList ToolSettings::loadResolutions()
{
    const int count = value(countKey).toInt();
    QStringList resolutions;
    for (int i = 0; i < qMin(count, maxResolutions); ++i)
        resolutions.append(text(resolutionKey(i)));
    if (count == 0) {
        const int defaults = static_cast<int>(defaultResolutions.size());
        QVector<iniText::Entry> entries{{countKey, {QString::number(defaults)}}};
        int index = 0;
        for (const char *resolution : defaultResolutions)
            entries.append({resolutionKey(index++), {resolution}});
        set(entries);
    }
    return resolutions;
}

QString ToolSettings::caption(const QString &key) const
{
    const QVariant found = value(key);
    return found.type() == QVariant::StringList
               ? iniText::rawValue(readFile(m_store.fileName()).value_or(QByteArray()), key)
               : found.toString();
}

bool ToolSettings::hasGroup(const QString &group) const
{
    const auto isInGroup = [&group](const iniText::Entry &entry) {
        return entry.key.startsWith(group + '/');
    };
    return std::any_of(m_unwritten.begin(), m_unwritten.end(), isInGroup) ||
           m_store.childGroups().contains(group);
}

void ToolSettings::set(const QVector<iniText::Entry> &entries)
{
    const auto old = currentText();
    m_unwritten += entries;
    m_textUnwrittenInto = old;
    // A file that cannot be read is not replaced: what it holds would be lost.
    if (!old && QFile::exists(m_file))
        return;
    const QByteArray text = iniText::withEntries(old.value_or(QByteArray()), m_unwritten);
    if (text == old || replaceFile(m_file, text))
        m_unwritten.clear();
    m_store.sync();
}

void ToolSettings::refresh()
{
    currentText();
    m_store.sync();
}

std::optional<QByteArray> ToolSettings::currentText()
{
    const auto text = readFile(m_file);
    if (text != m_textUnwrittenInto)
        m_unwritten.clear();
    return text;
}

QVariant ToolSettings::value(const QString &key) const
{
    const auto unwritten =
        std::find_if(m_unwritten.rbegin(), m_unwritten.rend(),
                     [&key](const iniText::Entry &entry) { return entry.key == key; });
    if (unwritten == m_unwritten.rend())
        return m_store.value(key);
    return unwritten->values.size() == 1 ? QVariant(unwritten->values.first())
                                         : QVariant(unwritten->values);
}
