#include "cli/watched_link.h"

WatchedLink::WatchedLink(std::unique_ptr<SerialLink> link) : m_link(std::move(link))
{
    connect(m_link.get(), &SerialLink::readyRead, this, &SerialLink::readyRead);
    connect(m_link.get(), &SerialLink::lost, this, [this] {
        m_wasLost = true;
        emit lost();
    });
}

void WatchedLink::setPortName(const QString &name)
{
    m_name = name;
    m_link->setPortName(name);
}

bool WatchedLink::open()
{
    const bool isOpened = m_link->open();
    m_wasLost = m_wasLost && !isOpened;
    return isOpened;
}

void WatchedLink::write(const QByteArray &bytes)
{
    m_lastSent = bytes;
    m_receivedSince = 0;
    m_answer.clear();
    m_sentBytes += bytes.size();
    m_link->write(bytes);
    emit sent(bytes);
}

QByteArray WatchedLink::readAll()
{
    const QByteArray bytes = m_link->readAll();
    constexpr int longestAnswer = 16; // that is of interest
    m_receivedSince += bytes.size();
    m_receivedInExchange += bytes.size();
    m_answer += bytes.left(longestAnswer - m_answer.size());
    if (!bytes.isEmpty())
        emit received(bytes);
    return bytes;
}
