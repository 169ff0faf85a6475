#include "engine/tick_clock.h"

void TickClock::beginWait(qint64 now)
{
    if (now - m_last >= tickNanoseconds)
        m_last = now;
}

void TickClock::limit(qint64 now)
{
    m_last = qMax(m_last, now - maxTicksAtOnce * tickNanoseconds);
}

bool TickClock::take(qint64 now)
{
    if (now - m_last < tickNanoseconds)
        return false;
    m_last += tickNanoseconds;
    return true;
}
