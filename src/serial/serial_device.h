#pragma once

#include <QSerialPort>
#include <QString>
#include <QStringList>

#include <optional>

/// What the system knows of a serial device, and Qt does not tell. Each system has a file of its
/// own.
namespace serialDevice {

/// The device that `name` leads to, by its own name; `name` where there is none. Qt locks a port by
/// its name, which is to be the same however the user calls the device.
QString deviceOf(const QString &name);
/// Keeps other programs from the open port, also those that the system would let in, as it does
/// with those of root. False where another program does so already.
bool lock(const QSerialPort &port);
/// Asks the driver of the open port to pass on at once what arrives, which adapters hold back for
/// some 16 ms otherwise. Whether that changed anything, which restoreLatency() is to undo then.
bool lowerLatency(const QSerialPort &port);
void restoreLatency(const QSerialPort &port);
/// Whether bytes wait in the device of the open port right now.
bool hasInput(const QSerialPort &port);
/// How many bytes that were written to the open port wait in Qt or in the driver, as far as it
/// tells.
qint64 bytesToSend(const QSerialPort &port);
/// Whether the device of the open port went away.
bool isGone(const QSerialPort &port);
/// Hands what was written to the open port to the driver, which sends it even if the port is closed
/// then. Takes no longer than the line needs for it.
void handToDriver(QSerialPort &port);
/// Whether the user may not use the device that is called `name`.
bool isForbidden(const QString &name);
/// Whether both names lead to one device.
bool isSame(const QString &name, const QString &otherName);
/// The other programs that hold the device that is called `name`, such as "picocom (4711)" with the
/// process ID, as far as the system tells.
QStringList holders(const QString &name);
/// How long the adapter that is called `name` holds bytes back that arrive, in milliseconds;
/// nothing where the system does not tell.
std::optional<int> latency(const QString &name);

} // namespace serialDevice
