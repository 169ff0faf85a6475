#include "engine/traffic_log.h"

#include <QDateTime>

namespace {

/// What is complete with `bytes`. What was sent is whole; what was received may be a piece.
QString meaningOf(FrameDecoder &decoder, const QByteArray &bytes, bool isWhole)
{
    QVector<DecodedFrame> found = decoder.take(bytes);
    found += isWhole ? decoder.takeRest() : decoder.takeGarbage();
    QStringList meanings;
    for (const DecodedFrame &frame : qAsConst(found))
        meanings.append(frame.meaning);
    if (decoder.waiting() > 0)
        meanings.append("beginning of a frame");
    return meanings.join("; ");
}

} // namespace

TrafficLog::TrafficLog(QObject *parent) : QObject(parent)
{
    connect(&m_batch, &PacedTrigger::fired, this, [this] {
        const QStringList lines = m_pending;
        m_pending.clear();
        emit linesReady(lines);
    });
}

void TrafficLog::add(Direction direction, const QByteArray &bytes)
{
    if (m_lines.size() == maxLines)
        m_lines.pop_front();
    m_lines.push_back({QDateTime::currentMSecsSinceEpoch(), direction, bytes, m_format});
    // Views keep maxLines lines; an older one would be dropped as soon as it was shown.
    if (m_pending.size() == maxLines)
        m_pending.removeFirst();
    m_pending.append(QString::fromLatin1(bytes.toHex()));
    m_batch.request();
}

void TrafficLog::clear()
{
    m_lines.clear();
    m_pending.clear();
    m_batch.cancel();
}

QString TrafficLog::record() const
{
    FrameDecoder sent(FrameSender::Tool);
    FrameDecoder received(FrameSender::Module);
    QString text;
    for (const Line &line : m_lines) {
        const bool isSent = line.direction == Direction::Sent;
        FrameDecoder &decoder = isSent ? sent : received;
        decoder.setFormat(line.format);
        text += QDateTime::fromMSecsSinceEpoch(line.time).toString("yyyy-MM-dd HH:mm:ss.zzz") +
                (isSent ? " > " : " < ") + line.bytes.toHex() + "  " +
                meaningOf(decoder, line.bytes, isSent) + '\n';
    }
    return text;
}
