#include "engine/heartbeat.h"

#include "engine/download_session.h"
#include "engine/step_dispatch.h"

Heartbeat::Heartbeat(DownloadSession &session, StepDispatch &dispatch,
                     std::function<void()> readLinks, const TimeSource &time)
    : m_session(session), m_dispatch(dispatch), m_readLinks(std::move(readLinks)), m_now(time.now)
{
    m_timer.setInterval(time.turn);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &Heartbeat::onTimeout);
    m_session.onStart = [this] { wake(); };
}

void Heartbeat::start()
{
    m_isStarted = true;
    wake();
}

void Heartbeat::wake()
{
    if (m_isStarted && !m_timer.isActive())
        m_timer.start();
}

void Heartbeat::onTimeout()
{
    emit fired();
    if (m_session.commandType == commandType::idle) {
        m_dispatch.tick();
        m_timer.stop();
        return;
    }
    // Queued, because Qt delivers no event of a timer whose own slot still runs: ticks must go on
    // in the event loop of a box that a step shows.
    QMetaObject::invokeMethod(this, &Heartbeat::runDueTicks, Qt::QueuedConnection);
}

void Heartbeat::runDueTicks()
{
    m_readLinks();
    const qint64 now = m_now();
    if (m_session.starts != m_startsSeen) {
        m_startsSeen = m_session.starts;
        m_clock.restart(now - TickClock::tickNanoseconds);
    }
    m_clock.limit(now);
    // An exchange that a tick starts waits for its own first timeout.
    while (m_session.starts == m_startsSeen && m_session.commandType != commandType::idle &&
           m_clock.take(now)) {
        m_dispatch.tick();
        if (m_session.tick <= 1) {
            // A wait begins: what it waits for is sent and answered in later passes only, and the
            // time that sending took, or opening a port, must not shorten it.
            m_clock.beginWait(m_now());
            return;
        }
    }
}
