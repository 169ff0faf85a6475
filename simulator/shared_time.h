#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

namespace k7 {

/// The time of a simulated module and of the tool beside it, in one process. It passes in steps,
/// and each step gives both a turn of the event loop, so that neither finds the other late because
/// the computer was busy.
class SharedTime : public QObject
{
    Q_OBJECT

public:
    enum class Pace {
        OfTheSystem, ///< as long as the event loop keeps up with it; what that loses does not count
        OfTheLoop,   ///< a millisecond a turn, however little time that takes
    };

    explicit SharedTime(Pace pace, QObject *parent = nullptr);

    qint64 nanoseconds() const { return m_now; }
    qint64 milliseconds() const { return m_now / 1'000'000; }
    /// The interval in milliseconds of timers that follow it; 0 is a turn of the event loop.
    int turn() const { return m_pace == Pace::OfTheSystem ? 1 : 0; }

signals:
    /// Another step has passed. No time passes until the slots have returned.
    void passed();

private:
    void step();

    const Pace m_pace;
    qint64 m_now = 0;
    QElapsedTimer m_sinceStep;
    QTimer m_timer;
};

} // namespace k7
