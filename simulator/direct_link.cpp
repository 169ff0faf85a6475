#include "simulator/direct_link.h"

#include "simulator/shared_time.h"
#include "simulator/simulator.h"

namespace k7 {

DirectLink::DirectLink(const Simulator &simulator, QObject *parent)
    : SerialLink(parent), m_simulator(simulator)
{
}

DirectLink::~DirectLink()
{
    close();
}

bool DirectLink::open()
{
    if (isOpen())
        return false;
    DirectWire *wire = m_simulator.directWire(m_name);
    if (!wire || !wire->seize()) {
        m_openFailure = wire ? OpenFailure::InUse : OpenFailure::NoSuchPort;
        return false;
    }
    m_wire = wire;
    // What arrived while the link was closed answers nothing that is asked from now on.
    m_input.clear();
    connect(wire, &DirectWire::sent, this, &DirectLink::onSent);
    connect(wire, &DirectWire::hungUp, this, &DirectLink::onHungUp);
    return true;
}

void DirectLink::close()
{
    if (!m_wire)
        return;
    m_wire->disconnect(this);
    m_wire->release();
    m_wire.clear();
}

void DirectLink::write(const QByteArray &bytes)
{
    if (isOpen())
        m_wire->writeToModule(bytes, m_rate);
}

void DirectLink::poll()
{
    if (!m_input.isEmpty())
        emit readyRead();
}

void DirectLink::onSent(const QByteArray &bytes)
{
    // Announced with an event of its own, as a device does; poll() may come first.
    m_input.append(bytes);
    QMetaObject::invokeMethod(this, &DirectLink::poll, Qt::QueuedConnection);
}

void DirectLink::onHungUp()
{
    close();
    QMetaObject::invokeMethod(this, &SerialLink::lost, Qt::QueuedConnection);
}

Links directLinks(const Simulator &simulator)
{
    return {std::make_unique<DirectLink>(simulator), std::make_unique<DirectLink>(simulator)};
}

TimeSource timeOf(const SharedTime &time)
{
    return {[&time] { return time.nanoseconds(); }, time.turn()};
}

} // namespace k7
