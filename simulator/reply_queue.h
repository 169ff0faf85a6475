#pragma once

#include <QByteArray>
#include <QObject>
#include <QQueue>
#include <QTimer>

namespace k7 {

/// Hands replies out one after the other, late and in pieces if wanted.
class ReplyQueue : public QObject
{
    Q_OBJECT

public:
    explicit ReplyQueue(QObject *parent = nullptr);

    /// Queues `reply` behind all earlier ones. It starts `delay` milliseconds after the one before
    /// it has gone out, and comes in pieces of `pieceBytes` bytes a few milliseconds apart; 0 or
    /// less means at once, and in one piece.
    void enqueue(const QByteArray &reply, int delay, int pieceBytes);
    /// Drops everything that has not gone out.
    void clear();

signals:
    /// The next bytes for the tool; from within enqueue() when nothing delays them.
    void due(const QByteArray &bytes);

private:
    struct Piece
    {
        QByteArray bytes;
        int delay; // milliseconds
    };

    void startNext();
    void sendFirst();

    QQueue<Piece> m_pieces;
    QTimer m_timer;
};

} // namespace k7
