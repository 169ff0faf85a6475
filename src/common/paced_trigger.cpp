#include "common/paced_trigger.h"

PacedTrigger::PacedTrigger(int interval, QObject *parent) : QObject(parent), m_interval(interval)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_sinceFired.start();
        emit fired();
    });
}

void PacedTrigger::request()
{
    if (m_timer.isActive())
        return;
    const qint64 elapsed = m_sinceFired.isValid() ? m_sinceFired.elapsed() : m_interval;
    m_timer.start(static_cast<int>(qMax<qint64>(0, m_interval - elapsed)));
}
