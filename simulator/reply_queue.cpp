#include "simulator/reply_queue.h"

namespace k7 {

namespace {

/// Milliseconds between pieces: long enough for the tool to read them one by one.
constexpr int pieceGap = 2;

} // namespace

ReplyQueue::ReplyQueue(QObject *parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ReplyQueue::sendFirst);
}

void ReplyQueue::enqueue(const QByteArray &reply, int delay, int pieceBytes)
{
    const int step = pieceBytes > 0 ? pieceBytes : qMax(1, reply.size());
    int wait = qMax(0, delay);
    for (QByteArray rest = reply; !rest.isEmpty(); rest.remove(0, step)) {
        m_pieces.enqueue({rest.left(step), wait});
        wait = pieceGap;
    }
    startNext();
}

void ReplyQueue::clear()
{
    m_timer.stop();
    m_pieces.clear();
}

void ReplyQueue::startNext()
{
    if (m_pieces.isEmpty() || m_timer.isActive())
        return;
    if (m_pieces.head().delay == 0)
        sendFirst();
    else
        m_timer.start(m_pieces.head().delay);
}

void ReplyQueue::sendFirst()
{
    emit due(m_pieces.dequeue().bytes);
    startNext();
}

} // namespace k7
