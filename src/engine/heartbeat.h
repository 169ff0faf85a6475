#pragma once

#include "engine/tick_clock.h"
#include "engine/time_source.h"

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
    Heartbeat(DownloadSession &session, StepDispatch &dispatch, std::function<void()> readLinks,
              const TimeSource &time = {});

    void start() { m_timer.start(); }

signals:
    /// A millisecond has passed, or several; also while no exchange runs.
    void fired();

private:
    void onTimeout();
    void runDueTicks();

    DownloadSession &m_session;
    StepDispatch &m_dispatch;
    const std::function<void()> m_readLinks;
    const std::function<qint64()> m_now;
    QTimer m_timer;
    TickClock m_clock;
    quint32 m_startsSeen = 0;
};
