#include "simulator/direct_wire.h"

namespace k7 {

bool DirectWire::open()
{
    if (m_isOpen)
        return false;
    m_isOpen = true;
    return true;
}

void DirectWire::write(const QByteArray &bytes)
{
    if (m_isOpen && m_isSeized)
        emit sent(bytes);
}

void DirectWire::hangUp()
{
    if (!m_isOpen)
        return;
    m_isOpen = false;
    emit hungUp();
}

bool DirectWire::seize()
{
    if (m_isSeized)
        return false;
    m_isSeized = true;
    return true;
}

void DirectWire::writeToModule(const QByteArray &bytes, int rate)
{
    QMetaObject::invokeMethod(
        this,
        [this, bytes, rate] {
            if (m_isOpen)
                emit received(bytes, rate);
        },
        Qt::QueuedConnection);
}

} // namespace k7
