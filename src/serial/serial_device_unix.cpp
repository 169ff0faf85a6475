#include "serial/serial_device.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <linux/serial.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>

namespace {

bool isInState(int descriptor, short events)
{
    pollfd device{descriptor, events, 0};
    return ::poll(&device, 1, 0) > 0 && (device.revents & events) != 0;
}

/// False where the driver knows no low latency, refuses it, or has it so already.
bool setLowLatency(int descriptor, bool isLow)
{
    constexpr auto flag = static_cast<int>(ASYNC_LOW_LATENCY);
    serial_struct settings{};
    if (::ioctl(descriptor, TIOCGSERIAL, &settings) != 0 || isLow == ((settings.flags & flag) != 0))
        return false;
    settings.flags ^= flag;
    return ::ioctl(descriptor, TIOCSSERIAL, &settings) == 0;
}

QFileInfo deviceFile(const QString &name)
{
    return QFileInfo(name.startsWith('/') ? name : "/dev/" + name);
}

} // namespace

QString serialDevice::deviceOf(const QString &name)
{
    const QString device = deviceFile(name).canonicalFilePath();
    return device.isEmpty() ? name : device;
}

bool serialDevice::lock(const QSerialPort &port)
{
    // Closing the port unlocks it. A device that knows no locks is nobody's.
    return ::flock(port.handle(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

bool serialDevice::lowerLatency(const QSerialPort &port)
{
    return setLowLatency(port.handle(), true);
}

void serialDevice::restoreLatency(const QSerialPort &port)
{
    setLowLatency(port.handle(), false);
}

bool serialDevice::hasInput(const QSerialPort &port)
{
    return isInState(port.handle(), POLLIN);
}

qint64 serialDevice::bytesToSend(const QSerialPort &port)
{
    int queue = 0;
    return port.bytesToWrite() + (::ioctl(port.handle(), TIOCOUTQ, &queue) == 0 ? queue : 0);
}

bool serialDevice::isGone(const QSerialPort &port)
{
    return isInState(port.handle(), POLLHUP | POLLERR | POLLNVAL);
}

void serialDevice::handToDriver(QSerialPort &port)
{
    port.flush();
}

bool serialDevice::isForbidden(const QString &name)
{
    const QFileInfo file = deviceFile(name);
    return file.exists() && !(file.isReadable() && file.isWritable());
}

bool serialDevice::isSame(const QString &name, const QString &otherName)
{
    const QString device = deviceFile(name).canonicalFilePath();
    return device.isEmpty() ? name == otherName
                            : device == deviceFile(otherName).canonicalFilePath();
}

QStringList serialDevice::holders(const QString &name)
{
    const QString device = deviceFile(name).canonicalFilePath();
    QStringList found;
    if (device.isEmpty())
        return found;
    for (const QString &process : QDir("/proc").entryList(QDir::Dirs)) {
        if (process.toInt() == 0 || process.toLongLong() == QCoreApplication::applicationPid())
            continue;
        const QDir files("/proc/" + process + "/fd");
        const QFileInfoList open = files.entryInfoList(QDir::AllEntries | QDir::System);
        const bool holds = std::any_of(open.begin(), open.end(), [&device](const QFileInfo &file) {
            return file.symLinkTarget() == device;
        });
        QFile program("/proc/" + process + "/comm");
        if (holds && program.open(QIODevice::ReadOnly))
            found.append(QString("%1 (%2)").arg(QString(program.readAll()).simplified(), process));
    }
    return found;
}

std::optional<int> serialDevice::latency(const QString &name)
{
    QFile file("/sys/class/tty/" + QFileInfo(deviceOf(name)).fileName() + "/device/latency_timer");
    bool isNumber = false;
    const int milliseconds =
        file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toInt(&isNumber) : 0;
    return isNumber ? std::optional(milliseconds) : std::nullopt;
}
