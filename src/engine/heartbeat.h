#pragma once

#include "engine/tick_clock.h"
#include "engine/time_source.h"

#include <QObject>
#include <QTimer>

#include <functional>

struct DownloadSession;
class StepDispatch;

/// The tool's pulse: while an exchange runs, one tick of it for every millisecond that has passed.
/// Nobody is woken while none runs.
///
/// Before ticks run, `readLinks` takes in what waits in the ports, so that no check tick is judged
/// before a reply that has already arrived.
class Heartbeat : public QObject
{
    Q_OBJECT

public:
    Heartbeat(DownloadSession &session, StepDispatch &dispatch, std::function<void()> readLinks,
              const TimeSource &time = {});

    /// Before, exchanges that were started wait.
    void start();

signals:
    /// A millisecond has passed, or several, while an exchange ran; it may have ended.
    void fired();

private:
    void wake();
    void onTimeout();
    void runDueTicks();

    DownloadSession &m_session;
    StepDispatch &m_dispatch;
    const std::function<void()> m_readLinks;
    const std::function<qint64()> m_now;
    QTimer m_timer;
    bool m_isStarted = false;
    TickClock m_clock;
    quint32 m_startsSeen = 0;
};
