#pragma once

#include "engine/tick_clock.h"

#include <QObject>
#include <QTimer>

#include <functional>

struct DownloadSession;
class StepDispatch;

/// The tool's pulse: while an exchange runs, one tick of it for every millisecond that has passed.
///
/// Before ticks run, `readLinks` takes in what waits in the ports, so that no check tick is judged
/// before a reply that has already arrived.
class Heartbeat : public QObject
{
    Q_OBJECT

public:
    /// A time in nanoseconds that never goes back, from whatever beginning.
    using Clock = std::function<qint64()>;

    Heartbeat(DownloadSession &session, StepDispatch &dispatch, std::function<void()> readLinks,
              Clock clock = steadyTime);

    void start() { m_timer.start(); }

signals:
    /// A millisecond has passed, or several; also while no exchange runs.
    void fired();

private:
    void onTimeout();
    void runDueTicks();

    static qint64 steadyTime();

    static constexpr int intervalMilliseconds = 1;

    DownloadSession &m_session;
    StepDispatch &m_dispatch;
    const std::function<void()> m_readLinks;
    const Clock m_time;
    QTimer m_timer;
    TickClock m_clock;
    quint32 m_startsSeen = 0;
};
