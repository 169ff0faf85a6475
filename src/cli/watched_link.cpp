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
    m_sentBytes += bytes.size();
    m_link->write(bytes);
    emit sent(bytes);
}

QByteArray WatchedLink::readAll()
{
    const QByteArray bytes = m_link->readAll();
    m_receivedSince += bytes.size();
    if (!bytes.isEmpty())
        emit received(bytes);
    return bytes;
}
