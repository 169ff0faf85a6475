#pragma once

#include "cli/device.h"
#include "cli/failure.h"
#include "cli/reach.h"
#include "cli/watched_link.h"
#include "serial/serial_settings.h"

#include <QFile>

#include <memory>

/// The two links to a module.
enum class Link { Uart2, Ed2 };

const char *nameOf(Link link);

/// The links to the module of one device: ports of this computer, which are held from their first
/// opening on, or a simulated module in the process.
class DeviceLinks : public QObject
{
    Q_OBJECT

public:
    /// Throws a Failure where the log cannot be written.
    DeviceLinks(const Device &device, const Reach &reach);
    ~DeviceLinks() override;

    const Device &device() const { return m_device; }
    /// Another description of what is at the same ports.
    void use(const Device &device);
    bool isSimulated() const { return m_simulation != nullptr; }

    WatchedLink &at(Link link) { return link == Link::Uart2 ? *m_watched.uart : *m_watched.ed2; }
    const WatchedLink &at(Link link) const
    {
        return link == Link::Uart2 ? *m_watched.uart : *m_watched.ed2;
    }
    const TimeSource &time() const { return m_watched.time; }
    /// In milliseconds, from whatever beginning.
    qint64 now() const { return time().now() / 1'000'000; }

    int rate(Link link) const { return portOf(link).rate; }
    /// What opens `link` at this moment: a port may have got another name since it was there last.
    /// Throws a Failure where no port is named, or one device for both links.
    SerialSettings settings(Link link) const;

    bool wasLost() const { return at(Link::Uart2).wasLost() || at(Link::Ed2).wasLost(); }
    /// Bytes so far, and those of them that have not left the computer yet.
    qint64 sentBytes() const;
    qint64 bytesToSend() const;

    /// What is known of a module that does not answer on `link`.
    Failure silence(Link link, const QString &complaint) const;

private:
    struct Watched
    {
        explicit Watched(Links links);

        const std::unique_ptr<WatchedLink> uart;
        const std::unique_ptr<WatchedLink> ed2;
        const TimeSource time;
    };
    struct Simulation;

    const Device::Port &portOf(Link link) const
    {
        return link == Link::Uart2 ? m_device.uart2 : m_device.ed2;
    }
    QString portName(Link link) const;
    /// The port that was the only one when it was first asked for: it may go away and come back.
    const QString &onlyPort() const;
    void openLog(const QString &path);
    void log(const char *link, char direction, const QByteArray &bytes);

    Device m_device;
    const std::unique_ptr<Simulation> m_simulation;
    const Watched m_watched;
    mutable QString m_onlyPort;
    QFile m_log;
};
