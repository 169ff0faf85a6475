#include "engine/traffic_log.h"

#include <QDateTime>

TrafficLog::TrafficLog(QObject *parent) : QObject(parent)
{
    connect(&m_batch, &PacedTrigger::fired, this, [this] {
        const QStringList lines = m_pending;
        m_pending.clear();
        emit linesReady(lines);
    });
}

void TrafficLog::add(Direction direction, const QByteArray &bytes)
{
    if (m_lines.size() == maxLines)
        m_lines.pop_front();
    m_lines.push_back({QDateTime::currentMSecsSinceEpoch(), direction, bytes});
    // Views keep maxLines lines; an older one would be dropped as soon as it was shown.
    if (m_pending.size() == maxLines)
        m_pending.removeFirst();
    m_pending.append(QString::fromLatin1(bytes.toHex()));
    m_batch.request();
}

void TrafficLog::clear()
{
    m_lines.clear();
    m_pending.clear();
    m_batch.cancel();
}

QString TrafficLog::record() const
{
    QString text;
    for (const Line &line : m_lines)
        text += QDateTime::fromMSecsSinceEpoch(line.time).toString("yyyy-MM-dd HH:mm:ss.zzz") +
                (line.direction == Direction::Sent ? " > " : " < ") + line.bytes.toHex() + '\n';
    return text;
}
