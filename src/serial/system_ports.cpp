#include "serial/system_ports.h"

#include <QSerialPortInfo>

QStringList systemPorts()
{
    QStringList names;
    const auto ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &port : ports)
        names.append(port.portName());
    return names;
}
