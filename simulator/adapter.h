#pragma once

#include "simulator/random.h"

#include <QByteArray>
#include <QQueue>

namespace k7 {

/// How replies come from the module to the tool. With all values 0 each comes whole and at once.
struct Wiring
{
    /// Replies come in pieces of that many bytes, a few milliseconds apart; 0 sends them whole, or
    /// in the pieces of a USB adapter where `latency` or `jitter` tell that there is one.
    int split = 0;
    /// Milliseconds for which bytes are gathered before they are passed on; a full piece is passed
    /// on at once.
    int latency = 0;
    /// Up to that many milliseconds more, for each piece another number of them.
    int jitter = 0;
    // Of a thousand replies so many, on average, ...
    int lost = 0;    ///< never come
    int doubled = 0; ///< come twice
    int flipped = 0; ///< come with one bit that is wrong
};

/// What stands between the module and the tool, such as a USB adapter: it holds replies back, cuts
/// them and may damage them, always keeping the order of their bytes. It is told the time, in
/// nanoseconds of any clock that does not run back.
class Adapter
{
public:
    /// Adapters of the same `seed` that are told the same do the same, on every system.
    explicit Adapter(quint32 seed) : m_random(seed) {}

    /// Holds for replies that come from now on.
    void setWiring(const Wiring &wiring) { m_wiring = wiring; }
    /// Takes `reply`, which comes in `delay` nanoseconds behind all earlier ones.
    void enqueue(const QByteArray &reply, qint64 delay, qint64 now);
    /// The next piece; empty while none is due at `now`.
    QByteArray takeDue(qint64 now);
    bool isEmpty() const { return m_pieces.isEmpty() && m_gathered.isEmpty(); }
    /// Drops everything that has not gone out.
    void clear();

private:
    struct Piece
    {
        QByteArray bytes;
        qint64 due;
    };

    int pieceBytes() const;
    /// `reply` as it gets through.
    QByteArray damaged(const QByteArray &reply);
    qint64 anyJitter();
    /// Passes the first `count` of the gathered bytes on, at `at` or as soon as the piece before
    /// them allows.
    void pass(int count, qint64 at);

    Random m_random;
    Wiring m_wiring;
    qint64 m_lineFree = 0; ///< when the last reply has come
    QByteArray m_gathered;
    qint64 m_timer = 0; ///< when the gathered bytes are passed on
    QQueue<Piece> m_pieces;
    qint64 m_lastDue = 0;
};

} // namespace k7
