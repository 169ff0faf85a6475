#pragma once

#include "engine/line.h"

/// One kind of exchange with the module: what to do on each tick of the session that runs it.
///
/// A step makes its outcome final in the session before it shows a box, because ticks go on while
/// the box is open.
///
/// A strict step holds the tick at which it wants an answer until that has come: the same tick
/// comes again, a millisecond later. What is not answered begins again, after a silence.
class Step
{
public:
    /// `commandType` is the number of the exchange.
    Step(int commandType, const Line &line) : m_line(line), m_commandType(commandType) {}
    virtual ~Step() = default;
    Step(const Step &) = delete;
    Step &operator=(const Step &) = delete;

    int commandType() const { return m_commandType; }
    const SerialLink &link() const { return m_line.link; }

    /// Called once per tick while the session runs this exchange; acts on certain ticks only.
    virtual void step() = 0;

    /// Ends the exchange as one that the module does not answer: link closed, then the warning.
    void fail();

protected:
    DownloadSession &session() { return m_line.session; }

    /// Opens the link. When that is impossible the session is over, the user knows why, and the
    /// result is false.
    bool ensureOpen();
    /// What became of an answer.
    enum class Verdict {
        Came,
        Awaited, ///< it may still come: the tick is held
        Missing,
    };

    bool isStrict() const { return m_line.policy.awaitsEach; }
    void write(const QByteArray &bytes);
    /// Sends what must be answered: frames of one kind, and each of them.
    void writeAwaited(const QByteArray &bytes, int frames = 1);
    /// Whether all of what was written last is answered.
    Verdict verdict();
    /// The same for what the window never waits for.
    Verdict strictVerdict() { return isStrict() ? verdict() : Verdict::Came; }
    /// Holds the tick until what was written last has left the machine; true while it has not. The
    /// window holds none.
    bool holdsUntilSent();
    /// Has the piece that is not answered begin again, at tick 1, when `silence` milliseconds have
    /// passed in which late answers go by. False when that was done often enough, and in the
    /// window.
    bool again(int silence = lateAnswers);
    /// Ends the exchange and closes the link.
    void end(Outcome outcome);
    /// Ends the exchange as a download that the module has got whole, and says so.
    void complete();
    /// Puts the step's own state back to where a new exchange begins; called when one ends.
    virtual void rewind() {}
    /// Has the next piece begin with the next tick.
    void beginPiece();
    void showProgress(int done, int all);

    const Line m_line;

private:
    static constexpr int lateAnswers = 100;

    /// Ticks that the line takes for `bytes`.
    int lineTime(qint64 bytes) const;
    /// Ticks since the last byte left the machine; 0 before.
    int ticksSinceSent();
    void hold() { --session().tick; }

    const int m_commandType;
    int m_awaited = 0;    ///< answers to what was written last
    quint32 m_sentAt = 0; ///< when the last byte leaves the machine, as far as is known
    quint32 m_answeredAt = 0;
    int m_patience = 0; ///< ticks from then on
};
