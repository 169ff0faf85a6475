#include "simulator/shared_time.h"

namespace k7 {

namespace {

constexpr qint64 millisecond = 1'000'000; // in nanoseconds

/// What may pass in one step: as much as the tool makes up for at once when it is late.
constexpr qint64 longestStep = 4 * millisecond;

} // namespace

SharedTime::SharedTime(Pace pace, QObject *parent) : QObject(parent), m_pace(pace)
{
    m_sinceStep.start();
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &SharedTime::step);
    m_timer.start(turn());
}

void SharedTime::step()
{
    const qint64 elapsed = m_sinceStep.nsecsElapsed();
    m_sinceStep.start();
    m_now += m_pace == Pace::OfTheSystem ? qMin(elapsed, longestStep) : millisecond;
    emit passed();
}

} // namespace k7
