#pragma once

#include "common/paced_trigger.h"
#include "serial/frame_decoder.h"

#include <QByteArray>
#include <QObject>
#include <QStringList>

#include <deque>

/// The record of the UART2 link's traffic: one line of lower-case hexadecimal digits for every
/// frame that goes out alone and for every read, in order; the frames of downloads are not in it.
/// Views get the lines in batches, so that a steady stream does not paint them for every read.
class TrafficLog : public QObject
{
    Q_OBJECT

public:
    /// Lines that are worth keeping: a day of traffic must not eat the machine.
    static constexpr int maxLines = 10000;
    static constexpr int batchInterval = 80; ///< milliseconds

    explicit TrafficLog(QObject *parent = nullptr);

    /// How the frames look that are added from now on.
    void setFormat(const FrameFormat &format) { m_format = format; }

    enum class Direction { Sent, Received };
    void add(Direction direction, const QByteArray &bytes);
    /// Forgets all lines, also those that no view has seen yet.
    void clear();

    /// The last maxLines lines, each with its time, ">" when it was sent or "<" when it was
    /// received, and what is complete with it:
    /// "2026-01-31 09:05:00.250 > 5aa50483000f01  read VP 0x000F, 1 word (version)".
    QString record() const;

signals:
    /// At most maxLines lines, oldest first.
    void linesReady(const QStringList &lines);

private:
    struct Line
    {
        qint64 time; ///< in milliseconds since 1970
        Direction direction;
        QByteArray bytes;
        FrameFormat format;
    };

    std::deque<Line> m_lines;
    QStringList m_pending;
    FrameFormat m_format;
    PacedTrigger m_batch{batchInterval};
};
