#include "serial/qt_serial_link.h"

#include "serial/serial_device.h"

#include <QVariant>

namespace {

/// The property of QSerialPort by which closing it puts the settings back.
constexpr char restoresSettings[] = "settingsRestoredOnClose";

} // namespace

QtSerialLink::QtSerialLink(QObject *parent) : SerialLink(parent)
{
    m_port.setDataBits(QSerialPort::Data8);
    m_port.setParity(QSerialPort::NoParity);
    m_port.setStopBits(QSerialPort::OneStop);
    m_port.setFlowControl(QSerialPort::NoFlowControl);
    // Restored settings would change the rate under bytes that the driver has yet to send.
    m_port.setProperty(restoresSettings, false);
    connect(&m_port, &QSerialPort::readyRead, this, &SerialLink::readyRead);
    connect(&m_port, &QSerialPort::errorOccurred, this, &QtSerialLink::onError);
}

QtSerialLink::~QtSerialLink()
{
    closePort();
}

void QtSerialLink::setBaudRate(int rate)
{
    if (m_port.setBaudRate(rate))
        return;
    // Going on at the old rate would hide that. A closed port takes any rate, and fails to open.
    closePort();
    m_port.setBaudRate(rate);
    QMetaObject::invokeMethod(this, &SerialLink::lost, Qt::QueuedConnection);
}

bool QtSerialLink::open()
{
    if (m_port.isOpen())
        return false;
    m_port.setPortName(serialDevice::deviceOf(m_name));
    if (!m_port.open(QIODevice::ReadWrite)) {
        m_openFailure = causeOf(m_port.error());
        return false;
    }
    if (!serialDevice::lock(m_port)) {
        // Whoever holds the port keeps its settings.
        m_port.setProperty(restoresSettings, true);
        m_port.close();
        m_port.setProperty(restoresSettings, false);
        m_openFailure = causeOf(QSerialPort::PermissionError);
        return false;
    }
    // What arrived while the link was closed answers nothing that is asked from now on.
    m_port.clear(QSerialPort::Input);
    m_isLatencyLowered = serialDevice::lowerLatency(m_port);
    return true;
}

QStringList QtSerialLink::holders() const
{
    return serialDevice::holders(m_name);
}

void QtSerialLink::close()
{
    // Closing drops what Qt has not yet handed to the driver.
    if (m_port.isOpen())
        serialDevice::handToDriver(m_port);
    abandon();
}

void QtSerialLink::abandon()
{
    if (!m_port.isOpen())
        return;
    m_port.flush();
    closePort();
}

void QtSerialLink::closePort()
{
    if (m_isLatencyLowered)
        serialDevice::restoreLatency(m_port);
    m_isLatencyLowered = false;
    if (m_port.isOpen())
        m_port.close();
}

void QtSerialLink::write(const QByteArray &bytes)
{
    if (m_port.isOpen())
        m_port.write(bytes);
}

qint64 QtSerialLink::bytesToSend() const
{
    return m_port.isOpen() ? serialDevice::bytesToSend(m_port) : 0;
}

void QtSerialLink::poll()
{
    // Where the system reads in the background, bytes that wait take a moment to come through.
    constexpr int moment = 1; // in milliseconds
    if (m_port.isOpen() && serialDevice::hasInput(m_port))
        m_port.waitForReadyRead(moment);
}

void QtSerialLink::onError(QSerialPort::SerialPortError error)
{
    // Which error a device that goes away gives depends on the system and its driver.
    const bool isError = error != QSerialPort::NoError && error != QSerialPort::TimeoutError;
    if (!isError || !m_port.isOpen())
        return;
    if (!serialDevice::isGone(m_port)) {
        // A read that finds nothing, because poll() came first, is reported as an error, too, and
        // may have made the port deaf; this makes it listen again.
        m_port.setReadBufferSize(0);
        return;
    }
    // Until it is closed, a port without its device reports errors without end.
    closePort();
    // Later, because whoever hears it may show a box while the port's own code is still running.
    QMetaObject::invokeMethod(this, &SerialLink::lost, Qt::QueuedConnection);
}

OpenFailure QtSerialLink::causeOf(QSerialPort::SerialPortError error) const
{
    switch (error) {
    case QSerialPort::DeviceNotFoundError:
        return OpenFailure::NoSuchPort;
    case QSerialPort::PermissionError:
        // Qt reports a port that is locked by another program as forbidden, too.
        if (serialDevice::isForbidden(m_name))
            return OpenFailure::NoPermission;
        return isHeldByPeer() ? OpenFailure::OurOwn : OpenFailure::InUse;
    default:
        return OpenFailure::NotASerialPort;
    }
}

bool QtSerialLink::isHeldByPeer() const
{
    // The peer may have got another name meanwhile: what counts is the device that it opened.
    return m_peer && m_peer->isOpen() && serialDevice::isSame(m_peer->m_port.portName(), m_name);
}
