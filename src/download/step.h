#pragma once

#include "common/notices.h"
#include "download/download_session.h"
#include "serial/frame_builder.h"
#include "serial/serial_link.h"

/// One kind of exchange with the module: what to do on each tick of the session that runs it.
///
/// A step makes its outcome final in the session before it shows a box, because ticks go on while
/// the box is open.
class Step
{
public:
    Step(DownloadSession &session, SerialLink &link, Notices &notices)
        : m_session(session), m_link(link), m_notices(notices)
    {
    }
    virtual ~Step() = default;
    Step(const Step &) = delete;
    Step &operator=(const Step &) = delete;

    /// Called once per tick while the session runs this exchange; acts on certain ticks only.
    virtual void step() = 0;

    /// Ends the exchange as one that the module does not answer: link closed, then the warning.
    void fail();

    const SerialLink &link() const { return m_link; }

protected:
    /// Opens the link. When that is impossible the session is over, the user knows why, and the
    /// result is false.
    bool ensureOpen();
    /// Ends the exchange and closes the link.
    void finish();
    /// Ends the exchange as a download that the module has got whole, and says so.
    void complete();
    /// Puts the step's own state back to where a new exchange begins; called when one ends.
    virtual void rewind() {}
    /// The exchange has ended, well or not; its outcome is final, and no box is open yet.
    virtual void ended() {}

    DownloadSession &m_session;
    SerialLink &m_link;
    Notices &m_notices;
};
