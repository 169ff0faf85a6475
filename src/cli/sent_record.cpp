#include "cli/sent_record.h"

#include "common/read_file.h"
#include "common/replace_file.h"
#include "download/flash_blocks.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QStandardPaths>
#include <QStringList>

#include <algorithm>

namespace {

constexpr char restartKey[] = "restart";

QString textOf(const ProjectFile &file)
{
    return QString("%1 %2").arg(file.state, QFileInfo(file.path).canonicalFilePath());
}

/// The flash blocks of `file`, as the keys of the record.
QStringList keysOf(const ProjectFile &file)
{
    QStringList keys;
    for (const BlockDownload::Block &block : flashBlocks(file.number, file.content))
        keys.append(QString::number(block.number));
    return keys;
}

} // namespace

SentRecord::SentRecord(const QString &id)
{
    if (id.isEmpty())
        return;
    const QString folder =
        QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + "/k7";
    m_path = QString("%1/sent-%2.json").arg(folder, id);
    m_files = QJsonDocument::fromJson(readFile(m_path).value_or(QByteArray())).object();
}

bool SentRecord::holds(const ProjectFile &file) const
{
    const QStringList keys = keysOf(file);
    return std::all_of(keys.begin(), keys.end(), [&](const QString &key) {
        return m_files.value(key).toString() == textOf(file);
    });
}

void SentRecord::remember(const ProjectFile &file)
{
    for (const QString &key : keysOf(file))
        m_files.insert(key, textOf(file));
}

void SentRecord::forget(const ProjectFile &file)
{
    for (const QString &key : keysOf(file))
        m_files.remove(key);
    save();
}

void SentRecord::forgetAll()
{
    const bool awaits = awaitsRestart();
    m_files = {};
    setAwaitsRestart(awaits);
}

bool SentRecord::awaitsRestart() const
{
    return m_files.contains(restartKey);
}

void SentRecord::setAwaitsRestart(bool awaits)
{
    if (awaits == awaitsRestart())
        return;
    if (awaits)
        m_files.insert(restartKey, "an operating system was sent");
    else
        m_files.remove(restartKey);
    save();
}

void SentRecord::save() const
{
    if (m_path.isEmpty() || !QDir().mkpath(QFileInfo(m_path).path()))
        return;
    replaceFile(m_path, QJsonDocument(m_files).toJson());
}
