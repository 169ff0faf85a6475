#include "serial/traffic_log.h"

TrafficLog::TrafficLog(QObject *parent) : QObject(parent)
{
    connect(&m_batch, &PacedTrigger::fired, this, [this] {
        const QStringList lines = m_pending;
        m_pending.clear();
        emit linesReady(lines);
    });
}

void TrafficLog::add(const QByteArray &bytes)
{
    // Views keep maxLines lines; an older one would be dropped as soon as it was shown.
    if (m_pending.size() == maxLines)
        m_pending.removeFirst();
    m_pending.append(QString::fromLatin1(bytes.toHex()));
    m_batch.request();
}

void TrafficLog::clear()
{
    m_pending.clear();
    m_batch.cancel();
}
