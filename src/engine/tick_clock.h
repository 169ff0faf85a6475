#pragma once

#include <QtGlobal>

/// Says how many ticks are due, so that ticks follow the wall clock although timers fire late.
///
/// It is told the time and reads no clock of its own.
class TickClock
{
public:
    static constexpr qint64 tickNanoseconds = 1'000'000;
    /// More ticks than this are never made up for at once: time that a blocked window lost
    /// stretches the wait instead.
    static constexpr int maxTicksAtOnce = 4;

    /// The next tick is due a whole tick after `now`.
    void restart(qint64 now) { m_last = now; }

    /// A wait begins at `now`: if ticks are due already, the next one is due a whole tick later.
    void beginWait(qint64 now);

    /// Forgets what is due at `now` beyond maxTicksAtOnce.
    void limit(qint64 now);

    /// Whether a tick is due at `now`; if so it is counted, so that whoever asks next, from within
    /// that tick too, does not run it again.
    bool take(qint64 now);

private:
    qint64 m_last = 0;
};
