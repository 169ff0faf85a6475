#pragma once

#include <QByteArray>
#include <QQueue>

namespace k7 {

/// Hands replies out one after the other, late and in pieces if wanted. It is told the time, in
/// nanoseconds of any clock that does not run back.
class ReplyQueue
{
public:
    /// Queues `reply` behind all earlier ones. It starts `delay` nanoseconds after the one before
    /// it has gone out, and comes in pieces of `pieceBytes` bytes a few milliseconds apart; 0 or
    /// less means at once, and in one piece.
    void enqueue(const QByteArray &reply, qint64 delay, int pieceBytes, qint64 now);
    /// The next piece; empty while none is due at `now`.
    QByteArray takeDue(qint64 now);
    bool isEmpty() const { return m_pieces.isEmpty(); }
    /// Drops everything that has not gone out.
    void clear() { m_pieces.clear(); }

private:
    struct Piece
    {
        QByteArray bytes;
        qint64 delay; ///< behind the piece before it
    };

    QQueue<Piece> m_pieces;
    qint64 m_due = 0; ///< when the first of them goes out
};

} // namespace k7
