#include "simulator/serial_wire.h"

namespace k7 {

SerialWire::SerialWire(const QString &port, int rate, QObject *parent)
    : Wire(parent), m_name(port), m_port(port)
{
    m_port.setBaudRate(rate);
    connect(&m_port, &QSerialPort::readyRead, this,
            [this] { emit received(m_port.readAll(), m_port.baudRate()); });
    connect(&m_port, &QSerialPort::errorOccurred, this, [this](QSerialPort::SerialPortError error) {
        if (error != QSerialPort::NoError && isOpen())
            emit lost();
    });
}

void SerialWire::write(const QByteArray &bytes)
{
    if (isOpen())
        m_port.write(bytes);
}

} // namespace k7
