#include "engine/transaction.h"

#include "engine/traffic_log.h"

void Transaction::start(std::function<QByteArray()> frame, int ticks)
{
    m_endTick = ticks;
    m_frame = std::move(frame);
    session().start(commandType());
}

void Transaction::step()
{
    if (session().tick == sendTick) {
        if (!ensureOpen())
            return;
        const QByteArray frame = m_frame();
        writeAwaited(frame);
        m_line.log.add(TrafficLog::Direction::Sent, frame);
    } else if (session().tick == sendTick + 1 && holdsUntilSent()) {
        return;
    } else if (isStrict() && m_answer == Answer::Reply) {
        if (session().tick > sendTick)
            judge();
    } else if (session().tick == m_endTick) {
        if (m_answer == Answer::Acknowledgement)
            judge();
        else
            end(Outcome::Done);
    }
}

void Transaction::judge()
{
    switch (verdict()) {
    case Verdict::Came:
        end(Outcome::Done);
        break;
    case Verdict::Missing:
        // To read again does no harm; to write again might.
        if (m_answer != Answer::Reply || !again())
            fail();
        break;
    case Verdict::Awaited:
        break;
    }
}

void Transaction::rewind()
{
    // The flag is cleared at the end only, not at the start: in the window an acknowledgement that
    // a stopped download left behind counts for the next write. That is wanted.
    if (m_answer == Answer::Acknowledgement)
        session().replyReceived = false;
}
