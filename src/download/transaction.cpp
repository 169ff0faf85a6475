#include "download/transaction.h"

#include "serial/traffic_log.h"

Transaction::Transaction(DownloadSession &session, SerialLink &link, Notices &notices,
                         TrafficLog &log, Answer answer, std::function<QByteArray()> frame)
    : Step(session, link, notices), m_log(log), m_answer(answer), m_frame(std::move(frame))
{
}

void Transaction::step()
{
    if (m_session.tick == sendTick) {
        if (!ensureOpen())
            return;
        const QByteArray frame = m_frame();
        m_link.write(frame);
        m_log.add(TrafficLog::Direction::Sent, frame);
    } else if (m_session.tick == endTick) {
        if (m_answer == Answer::Acknowledgement && !m_session.replyReceived)
            fail();
        else
            finish();
    }
}

void Transaction::rewind()
{
    // The flag is cleared at the end only, not at the start: an acknowledgement that a stopped
    // download left behind counts for the next write. That is wanted.
    if (m_answer == Answer::Acknowledgement)
        m_session.replyReceived = false;
}
