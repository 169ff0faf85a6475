#include "simulator/adapter.h"

#include <limits>

namespace k7 {

namespace {

constexpr qint64 millisecond = 1'000'000; // in nanoseconds

/// Nanoseconds between pieces: long enough for the tool to read them one by one.
constexpr qint64 pieceGap = 2 * millisecond;

/// A USB packet of full speed has 64 bytes; common adapters use two of them for their status.
constexpr int packetBytes = 62;

} // namespace

void Adapter::enqueue(const QByteArray &reply, qint64 delay, qint64 now)
{
    m_lineFree = qMax(m_lineFree, now) + qMax<qint64>(0, delay);
    if (m_timer <= m_lineFree)
        pass(m_gathered.size(), m_timer);
    bool isTimerSet = !m_gathered.isEmpty();
    m_gathered += damaged(reply);
    const int full = pieceBytes();
    for (; m_gathered.size() >= full; isTimerSet = false)
        pass(full, m_lineFree + anyJitter());
    if (!isTimerSet)
        m_timer = m_lineFree + m_wiring.latency * millisecond + anyJitter();
}

QByteArray Adapter::takeDue(qint64 now)
{
    if (m_timer <= now)
        pass(m_gathered.size(), m_timer);
    return m_pieces.isEmpty() || now < m_pieces.head().due ? QByteArray()
                                                           : m_pieces.dequeue().bytes;
}

void Adapter::clear()
{
    m_pieces.clear();
    m_gathered.clear();
    m_lineFree = m_lastDue = 0;
}

int Adapter::pieceBytes() const
{
    if (m_wiring.split > 0)
        return m_wiring.split;
    return m_wiring.latency > 0 || m_wiring.jitter > 0 ? packetBytes
                                                       : std::numeric_limits<int>::max();
}

QByteArray Adapter::damaged(const QByteArray &reply)
{
    if (m_random.happens(m_wiring.lost))
        return {};
    QByteArray bytes = m_random.happens(m_wiring.doubled) ? reply + reply : reply;
    if (m_random.happens(m_wiring.flipped) && !bytes.isEmpty()) {
        const int index = m_random.upTo(bytes.size() - 1);
        bytes[index] = static_cast<char>(bytes.at(index) ^ 1 << m_random.upTo(7));
    }
    return bytes;
}

qint64 Adapter::anyJitter()
{
    return m_random.upTo(m_wiring.jitter) * millisecond;
}

void Adapter::pass(int count, qint64 at)
{
    if (count == 0)
        return;
    m_lastDue = qMax(at, m_lastDue + (m_wiring.split > 0 ? pieceGap : 0));
    m_pieces.enqueue({m_gathered.left(count), m_lastDue});
    m_gathered.remove(0, count);
}

} // namespace k7
