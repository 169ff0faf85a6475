#pragma once

#include "engine/line.h"

/// One kind of exchange with the module: what to do on each tick of the session that runs it.
///
/// A step makes its outcome final in the session before it shows a box, because ticks go on while
/// the box is open.
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
    /// Sends what must be acknowledged.
    void writeAwaited(const QByteArray &bytes);
    /// Ends the exchange and closes the link.
    void end(Outcome outcome);
    /// Ends the exchange as a download that the module has got whole, and says so.
    void complete();
    /// Puts the step's own state back to where a new exchange begins; called when one ends.
    virtual void rewind() {}
    void showProgress(int done, int all);

    const Line m_line;

private:
    const int m_commandType;
};
