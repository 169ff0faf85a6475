#include "serial/qt_serial_link.h"

#include <QFileInfo>
#include <QVariant>

#ifdef Q_OS_UNIX
#include <poll.h>
#endif

namespace {

QFileInfo deviceOf(const QString &name)
{
    return QFileInfo(name.startsWith('/') ? name : "/dev/" + name);
}

} // namespace

QtSerialLink::QtSerialLink(QObject *parent) : SerialLink(parent)
{
    m_port.setDataBits(QSerialPort::Data8);
    m_port.setParity(QSerialPort::NoParity);
    m_port.setStopBits(QSerialPort::OneStop);
    m_port.setFlowControl(QSerialPort::NoFlowControl);
    // Restored settings would change the rate under bytes that the driver has yet to send.
    m_port.setProperty("settingsRestoredOnClose", false);
    connect(&m_port, &QSerialPort::readyRead, this, &SerialLink::readyRead);
    connect(&m_port, &QSerialPort::errorOccurred, this, &QtSerialLink::onError);
}

void QtSerialLink::setBaudRate(int rate)
{
    if (m_port.setBaudRate(rate))
        return;
    // Going on at the old rate would hide that. A closed port takes any rate, and fails to open.
    m_port.close();
    m_port.setBaudRate(rate);
    QMetaObject::invokeMethod(this, &SerialLink::lost, Qt::QueuedConnection);
}

bool QtSerialLink::open()
{
    if (m_port.isOpen())
        return false;
    m_port.setPortName(m_name);
    if (!m_port.open(QIODevice::ReadWrite)) {
        m_openFailure = causeOf(m_port.error());
        return false;
    }
    // What arrived while the link was closed answers nothing that is asked from now on.
    m_port.clear(QSerialPort::Input);
    return true;
}

void QtSerialLink::close()
{
    if (!m_port.isOpen())
        return;
    // Closing drops what Qt has not yet handed to the driver.
    m_port.flush();
    m_port.close();
}

void QtSerialLink::write(const QByteArray &bytes)
{
    if (m_port.isOpen())
        m_port.write(bytes);
}

void QtSerialLink::poll()
{
    if (m_port.isOpen() && hasInput())
        m_port.waitForReadyRead(0);
}

void QtSerialLink::onError(QSerialPort::SerialPortError error)
{
    const bool isTransferError = error == QSerialPort::ResourceError ||
                                 error == QSerialPort::ReadError ||
                                 error == QSerialPort::WriteError;
    if (!isTransferError || !m_port.isOpen())
        return;
    if (!isHungUp()) {
        // A read that finds nothing, because poll() came first, is reported as an error, too, and
        // may have made the port deaf; this makes it listen again.
        m_port.setReadBufferSize(0);
        return;
    }
    // Until it is closed, a port without its device reports errors without end.
    m_port.close();
    // Later, because whoever hears it may show a box while the port's own code is still running.
    QMetaObject::invokeMethod(this, &SerialLink::lost, Qt::QueuedConnection);
}

#ifdef Q_OS_UNIX

namespace {

bool isInState(int descriptor, short events)
{
    pollfd device{descriptor, events, 0};
    return ::poll(&device, 1, 0) > 0 && (device.revents & events) != 0;
}

} // namespace

bool QtSerialLink::hasInput() const
{
    return isInState(m_port.handle(), POLLIN);
}

bool QtSerialLink::isHungUp() const
{
    return isInState(m_port.handle(), POLLHUP | POLLERR | POLLNVAL);
}

#else

bool QtSerialLink::hasInput() const
{
    return true;
}

bool QtSerialLink::isHungUp() const
{
    return true;
}

#endif

OpenFailure QtSerialLink::causeOf(QSerialPort::SerialPortError error) const
{
    switch (error) {
    case QSerialPort::DeviceNotFoundError:
        return OpenFailure::NoSuchPort;
    case QSerialPort::PermissionError: {
        // Qt reports a port that is locked by another program as forbidden, too.
        const QFileInfo device = deviceOf(m_name);
        const bool forbidden = device.exists() && !(device.isReadable() && device.isWritable());
        if (forbidden)
            return OpenFailure::NoPermission;
        return isHeldByPeer() ? OpenFailure::OurOwn : OpenFailure::InUse;
    }
    default:
        return OpenFailure::NotASerialPort;
    }
}

bool QtSerialLink::isHeldByPeer() const
{
    if (!m_peer || !m_peer->isOpen())
        return false;
    // The peer may have got another name meanwhile: what counts is the device that it opened.
    const QString peerName = m_peer->m_port.portName();
    return peerName == m_port.portName() || deviceOf(peerName) == deviceOf(m_name);
}
