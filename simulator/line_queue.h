#pragma once

#include <QByteArray>

namespace k7 {

/// The bytes on a line of a certain rate: each takes ten bits, one after the other. It is told the
/// time, in nanoseconds of any clock that does not run back.
class LineQueue
{
public:
    explicit LineQueue(int rate) : m_byteTime(10'000'000'000 / rate) {}

    /// `bytes` go onto the line at `now`, behind those that are on it.
    void send(const QByteArray &bytes, qint64 now)
    {
        if (m_bytes.isEmpty())
            m_begin = now;
        m_bytes.append(bytes);
    }
    /// The bytes that have come to the end of the line since this was called last.
    QByteArray takeArrived(qint64 now)
    {
        const qint64 count = (now - m_begin) / m_byteTime;
        const QByteArray arrived =
            m_bytes.left(static_cast<int>(qMin<qint64>(count, m_bytes.size())));
        m_bytes.remove(0, arrived.size());
        m_begin += arrived.size() * m_byteTime;
        return arrived;
    }
    /// When the last of the bytes that were taken came.
    qint64 lastArrival() const { return m_begin; }
    bool isEmpty() const { return m_bytes.isEmpty(); }
    void clear() { m_bytes.clear(); }
    /// Nanoseconds that `bytes` bytes take.
    qint64 timeOf(int bytes) const { return bytes * m_byteTime; }

private:
    qint64 m_byteTime;
    qint64 m_begin = 0; ///< when the line was free for the first of m_bytes
    QByteArray m_bytes;
};

} // namespace k7
