#include "serial/serial_device.h"

#include <QElapsedTimer>

#include <windows.h>

namespace {

/// Without the prefix that ports from COM10 on are opened with.
QString bareName(const QString &name)
{
    const QString prefix = R"(\\.\)";
    return name.startsWith(prefix) ? name.mid(prefix.size()) : name;
}

} // namespace

QString serialDevice::deviceOf(const QString &name)
{
    return name;
}

bool serialDevice::lock(const QSerialPort & /*port*/)
{
    // An open port is for one program alone, whatever its name.
    return true;
}

bool serialDevice::lowerLatency(const QSerialPort & /*port*/)
{
    // It is a setting of each driver's own, in the device manager.
    return false;
}

void serialDevice::restoreLatency(const QSerialPort & /*port*/) {}

bool serialDevice::hasInput(const QSerialPort &port)
{
    COMSTAT state{};
    return ::ClearCommError(port.handle(), nullptr, &state) && state.cbInQue > 0;
}

qint64 serialDevice::bytesToSend(const QSerialPort &port)
{
    // What the driver has yet to finish, Qt counts, too.
    COMSTAT state{};
    const bool isKnown = ::ClearCommError(port.handle(), nullptr, &state);
    return qMax(port.bytesToWrite(), isKnown ? qint64{state.cbOutQue} : 0);
}

bool serialDevice::isGone(const QSerialPort &port)
{
    // The driver answers as long as there is a device.
    return !::ClearCommError(port.handle(), nullptr, nullptr);
}

void serialDevice::handToDriver(QSerialPort &port)
{
    // Writing goes on in the background, and closing the port cancels it.
    constexpr qint64 bitsPerByte = 10;
    constexpr qint64 margin = 100; // in milliseconds
    const qint64 time = port.bytesToWrite() * bitsPerByte * 1000 / qMax(port.baudRate(), 1);
    QElapsedTimer elapsed;
    elapsed.start();
    port.flush();
    while (port.bytesToWrite() > 0 && elapsed.elapsed() < time + margin)
        port.waitForBytesWritten(static_cast<int>(margin));
}

bool serialDevice::isForbidden(const QString & /*name*/)
{
    // Windows says the same of a port that is in use, which is what nearly always is the matter.
    return false;
}

bool serialDevice::isSame(const QString &name, const QString &otherName)
{
    return bareName(name).compare(bareName(otherName), Qt::CaseInsensitive) == 0;
}

QStringList serialDevice::holders(const QString & /*name*/)
{
    // Windows tells nobody.
    return {};
}

std::optional<int> serialDevice::latency(const QString & /*name*/)
{
    // It is a setting of each driver's own.
    return std::nullopt;
}
