#include "simulator/pseudo_terminal.h"

#include "simulator/line_rate.h"

#include <QSocketNotifier>

#include <cerrno>
#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

namespace k7 {

namespace {

/// Only this much is read at a time, so that a flood from one link does not starve the other.
constexpr size_t readBytes = 4096;

bool setRaw(int terminal)
{
    termios settings;
    if (::tcgetattr(terminal, &settings) != 0)
        return false;
    ::cfmakeraw(&settings);
    return ::tcsetattr(terminal, TCSANOW, &settings) == 0;
}

bool setNonBlocking(int descriptor)
{
    const int flags = ::fcntl(descriptor, F_GETFL);
    return flags >= 0 && ::fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) == 0;
}

bool isTransient(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

void closeDescriptor(int &descriptor)
{
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

/// The notifier may be the one whose signal is being handled, so it is not deleted on the spot.
void dismiss(QSocketNotifier *&notifier)
{
    if (notifier != nullptr) {
        notifier->setEnabled(false);
        notifier->deleteLater();
    }
    notifier = nullptr;
}

} // namespace

PseudoTerminal::~PseudoTerminal()
{
    hangUp();
}

bool PseudoTerminal::open()
{
    if (isOpen())
        return false;
    if (!openPair()) {
        hangUp();
        return false;
    }
    m_readable = new QSocketNotifier(m_master, QSocketNotifier::Read, this);
    connect(m_readable, &QSocketNotifier::activated, this, &PseudoTerminal::readAvailable);
    m_writable = new QSocketNotifier(m_master, QSocketNotifier::Write, this);
    m_writable->setEnabled(false);
    connect(m_writable, &QSocketNotifier::activated, this, &PseudoTerminal::writeQueued);
    return true;
}

bool PseudoTerminal::openPair()
{
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0)
        return false;
    const char *name = ::ptsname(m_master);
    if (name == nullptr)
        return false;
    m_path = QString::fromLocal8Bit(name);
    m_slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    return m_slave >= 0 && setRaw(m_slave) && setNonBlocking(m_master);
}

void PseudoTerminal::write(const QByteArray &bytes)
{
    if (!isOpen())
        return;
    m_queue.append(bytes);
    writeQueued();
}

void PseudoTerminal::writeQueued()
{
    const ssize_t taken =
        ::write(m_master, m_queue.constData(), static_cast<size_t>(m_queue.size()));
    if (taken < 0 && !isTransient(errno)) {
        hangUp();
        return;
    }
    if (taken > 0)
        m_queue.remove(0, static_cast<int>(taken));
    m_writable->setEnabled(!m_queue.isEmpty());
}

void PseudoTerminal::readAvailable()
{
    char buffer[readBytes];
    const ssize_t count = ::read(m_master, buffer, sizeof buffer);
    if (count > 0)
        emit received(QByteArray(buffer, static_cast<int>(count)), lineRate(m_master));
    else if (count == 0 || !isTransient(errno))
        hangUp();
}

void PseudoTerminal::hangUp()
{
    dismiss(m_readable);
    dismiss(m_writable);
    closeDescriptor(m_slave);
    closeDescriptor(m_master);
    m_queue.clear();
    m_path.clear();
}

Wire *makeTerminal(QObject *parent)
{
    return new PseudoTerminal(parent);
}

} // namespace k7
