#include "cli/ports.h"

#include "serial/serial_device.h"

#include <QFileInfo>

namespace ports {

namespace {

QString deviceOf(const QString &port)
{
    return port.startsWith('/') ? port : "/dev/" + port;
}

QStringList listed()
{
    QStringList lines;
    for (const QSerialPortInfo &port : QSerialPortInfo::availablePorts())
        lines.append(port.portName());
    return lines;
}

} // namespace

QString resolved(const QString &given)
{
    // A path says it all, and looking for all ports of the system takes its time.
    if (given.startsWith('/'))
        return given;
    QStringList found;
    for (const QSerialPortInfo &port : QSerialPortInfo::availablePorts()) {
        if (port.portName() == given)
            return given;
        if (!given.isEmpty() && port.serialNumber() == given)
            found.append(port.portName());
    }
    if (found.size() > 1)
        throw Failure{ExitCode::noPort,
                      QString("the serial number %1 belongs to %2").arg(given, found.join(" and ")),
                      "Name one of these ports."};
    return found.value(0, given);
}

bool isNoneListed()
{
    return QSerialPortInfo::availablePorts().isEmpty();
}

QString only()
{
    const QStringList names = listed();
    if (names.isEmpty())
        throw Failure{ExitCode::noPort, "the system lists no serial port",
                      "Plug the adapter in, or name a port with --uart2 PORT."};
    if (names.size() > 1)
        throw Failure{ExitCode::noPort,
                      "no port is named for UART2, and there are several: " + names.join(", "),
                      "Choose one with --uart2 PORT; `k7 ports` says more about them."};
    return names.first();
}

Failure openFailure(const QString &link, const QString &port, OpenFailure reason)
{
    const QString name = QString("%1 of %2").arg(port, link);
    switch (reason) {
    case OpenFailure::NoSuchPort:
        return {ExitCode::noPort, QString("there is no port %1").arg(name),
                "Plug the adapter in, or choose another port; `k7 ports` lists them."};
    case OpenFailure::InUse: {
        const QStringList programs = serialDevice::holders(port);
        return {ExitCode::noPort,
                QString("the port %1 is in use by %2")
                    .arg(name, programs.isEmpty() ? "another program" : programs.join(", ")),
                "Close that program first, or wait for it with --wait SECONDS."};
    }
    case OpenFailure::OurOwn:
        return {ExitCode::noPort, QString("the port %1 is that of the other link").arg(name),
                "Give --uart2 and --ed2 different ports."};
    case OpenFailure::NoPermission: {
        const QString group = QFileInfo(deviceOf(port)).group();
        return {ExitCode::noPort, QString("the port %1 may not be opened").arg(name),
                QString("Its device belongs to the group %1: sudo usermod -aG %1 $USER, then log "
                        "in again.")
                    .arg(group.isEmpty() ? "dialout" : group)};
    }
    case OpenFailure::NotASerialPort:
        break;
    }
    return {ExitCode::noPort, QString("the port %1 does not accept serial settings").arg(name),
            "Choose a serial port; `k7 ports` lists them."};
}

} // namespace ports
