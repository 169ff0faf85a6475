#include "simulator/reply_queue.h"

namespace k7 {

namespace {

/// Nanoseconds between pieces: long enough for the tool to read them one by one.
constexpr qint64 pieceGap = 2'000'000;

} // namespace

void ReplyQueue::enqueue(const QByteArray &reply, qint64 delay, int pieceBytes, qint64 now)
{
    const int step = pieceBytes > 0 ? pieceBytes : qMax(1, reply.size());
    qint64 wait = qMax<qint64>(0, delay);
    if (m_pieces.isEmpty())
        m_due = now + wait;
    for (QByteArray rest = reply; !rest.isEmpty(); rest.remove(0, step)) {
        m_pieces.enqueue({rest.left(step), wait});
        wait = pieceGap;
    }
}

QByteArray ReplyQueue::takeDue(qint64 now)
{
    if (m_pieces.isEmpty() || now < m_due)
        return {};
    const QByteArray bytes = m_pieces.dequeue().bytes;
    if (!m_pieces.isEmpty())
        m_due = now + m_pieces.head().delay;
    return bytes;
}

} // namespace k7
