#include "simulator/simulator.h"

namespace k7 {

Simulator::Simulator(const FrameFormat &format, QObject *parent) : QObject(parent), m_module(format)
{
    m_module.setTrace([this](const QString &line) { emit traced(line); });
    wire(Link::Uart2, m_uart, m_uartReplies);
    wire(Link::Ed2, m_ed2, m_ed2Replies);
}

void Simulator::wire(Link link, PseudoTerminal &terminal, ReplyQueue &replies)
{
    connect(&terminal, &PseudoTerminal::received, this,
            [this, link, &replies](const QByteArray &bytes) { receive(link, bytes, replies); });
    connect(&replies, &ReplyQueue::due, &terminal, &PseudoTerminal::write);
}

bool Simulator::start()
{
    unplug();
    m_receivedBytes = 0;
    if (m_uart.open() && m_ed2.open())
        return true;
    unplug();
    return false;
}

void Simulator::receive(Link link, const QByteArray &bytes, ReplyQueue &replies)
{
    const bool mayHangUp = m_behaviour.hangUpAfter >= 0;
    const qint64 allowed = mayHangUp ? m_behaviour.hangUpAfter - m_receivedBytes : bytes.size();
    const QByteArray taken = bytes.left(static_cast<int>(qBound<qint64>(0, allowed, bytes.size())));
    m_receivedBytes += taken.size();

    for (const QByteArray &reply : m_module.receive(link, taken))
        if (!m_behaviour.silent)
            replies.enqueue(noise() + reply, m_behaviour.delay, m_behaviour.split);
    if (mayHangUp && m_receivedBytes >= m_behaviour.hangUpAfter)
        hangUp();
}

QByteArray Simulator::noise() const
{
    if (!m_behaviour.noisy)
        return {};
    QByteArray garbage = QByteArrayLiteral("\xFF\x13\x80\xFE\x37\x21\x7F");
    // Without the first header byte nothing in it can start a frame.
    return garbage.replace(static_cast<char>(m_module.format().header1), "");
}

void Simulator::hangUp()
{
    unplug();
    emit hungUp();
}

void Simulator::unplug()
{
    m_uartReplies.clear();
    m_ed2Replies.clear();
    m_uart.hangUp();
    m_ed2.hangUp();
    m_module.dropUnfinishedFrames();
}

} // namespace k7
