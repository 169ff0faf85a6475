#pragma once

#include "download/tick_clock.h"

#include <QElapsedTimer>
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
              QObject *parent = nullptr);

    void start();

signals:
    /// A millisecond has passed, or several; also while no exchange runs.
    void fired();

private:
    void onTimeout();
    void runDueTicks();

    static constexpr int intervalMilliseconds = 1;

    DownloadSession &m_session;
    StepDispatch &m_dispatch;
    const std::function<void()> m_readLinks;
    QTimer m_timer;
    QElapsedTimer m_time;
    TickClock m_clock;
    quint32 m_startsSeen = 0;
};
