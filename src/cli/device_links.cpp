#include "cli/device_links.h"

#include "cli/ports.h"
#include "serial/serial_device.h"
#include "simulator/direct_link.h"
#include "simulator/shared_time.h"
#include "simulator/simulator.h"

#include <QDateTime>

namespace {

/// The bytes as people write them; of a long block the first ones.
QString hexText(const QByteArray &bytes)
{
    constexpr int shown = 32;
    const QString digits = QString::fromLatin1(bytes.left(shown).toHex(' ').toUpper());
    return bytes.size() <= shown ? digits
                                 : QString("%1 … (%2 bytes)").arg(digits).arg(bytes.size());
}

k7::ModuleSettings moduleOf(const Device &device)
{
    k7::ModuleSettings settings;
    settings.format = {device.header1, device.header2, device.crcEnabled};
    settings.layout = static_cast<k7::Layout>(device.model);
    settings.uartRate = device.uart2.rate;
    settings.screen = device.screen.value_or(settings.screen);
    return settings;
}

} // namespace

const char *nameOf(Link link)
{
    return link == Link::Uart2 ? "UART2" : "ED2";
}

/// A simulated module, as slow as a real one.
struct DeviceLinks::Simulation
{
    Simulation(const Device &device, const k7::Wiring &wiring) : module(moduleOf(device), &time)
    {
        k7::Behaviour behaviour{wiring};
        behaviour.realTime = true;
        module.setBehaviour(behaviour);
        module.start(k7::Way::InProcess);
    }

    Links links() const
    {
        Links links = k7::directLinks(module);
        links.time = k7::timeOf(time);
        return links;
    }

    k7::SharedTime time{k7::SharedTime::Pace::OfTheSystem};
    k7::Simulator module;
};

DeviceLinks::Watched::Watched(Links links)
    : uart(std::make_unique<WatchedLink>(std::move(links.uart)))
    , ed2(std::make_unique<WatchedLink>(std::move(links.ed2)))
    , time(links.time)
{
}

DeviceLinks::DeviceLinks(const Device &device, const Reach &reach)
    : m_device(device)
    , m_simulation(reach.isSimulated ? std::make_unique<Simulation>(device, reach.wiring) : nullptr)
    , m_watched(m_simulation ? m_simulation->links() : reach.links())
{
    if (!reach.logFile.isEmpty())
        openLog(reach.logFile);
}

DeviceLinks::~DeviceLinks() = default;

void DeviceLinks::use(const Device &device)
{
    m_device = device;
    if (m_simulation)
        m_simulation->module.configure(moduleOf(device));
}

SerialSettings DeviceLinks::settings(Link link) const
{
    const QString name = portName(link);
    const Link other = link == Link::Uart2 ? Link::Ed2 : Link::Uart2;
    if (!m_simulation && !portOf(other).name.isEmpty() &&
        serialDevice::isSame(name, ports::resolved(portOf(other).name)))
        throw ports::openFailure(nameOf(link), name, OpenFailure::OurOwn);
    return {name, rate(link), m_device.header1, m_device.header2, m_device.crcEnabled};
}

QString DeviceLinks::portName(Link link) const
{
    const QString &given = portOf(link).name;
    if (m_simulation)
        return link == Link::Uart2 ? m_simulation->module.uartPath()
                                   : m_simulation->module.ed2Path();
    if (!given.isEmpty())
        return ports::resolved(given);
    if (link == Link::Uart2)
        return onlyPort();
    throw Failure{ExitCode::noPort, "no port is named for ED2",
                  "Name it with --ed2 PORT; `k7 ports` lists the ports of the system."};
}

const QString &DeviceLinks::onlyPort() const
{
    if (m_onlyPort.isEmpty())
        m_onlyPort = ports::only();
    return m_onlyPort;
}

qint64 DeviceLinks::sentBytes() const
{
    return at(Link::Uart2).sentBytes() + at(Link::Ed2).sentBytes();
}

qint64 DeviceLinks::bytesToSend() const
{
    return at(Link::Uart2).bytesToSend() + at(Link::Ed2).bytesToSend();
}

void DeviceLinks::openLog(const QString &path)
{
    m_log.setFileName(path);
    if (!m_log.open(QIODevice::WriteOnly | QIODevice::Append))
        throw Failure{ExitCode::badFile, path + " cannot be written: " + m_log.errorString(),
                      "Choose another file for --log."};
    for (const Link each : {Link::Uart2, Link::Ed2}) {
        const char *name = nameOf(each);
        connect(&at(each), &WatchedLink::sent, this,
                [this, name](const QByteArray &bytes) { log(name, '>', bytes); });
        connect(&at(each), &WatchedLink::received, this,
                [this, name](const QByteArray &bytes) { log(name, '<', bytes); });
    }
}

void DeviceLinks::log(const char *link, char direction, const QByteArray &bytes)
{
    const QString time = QDateTime::currentDateTime().toString("yyyy-MM-dd HH:mm:ss.zzz");
    m_log.write(
        QString("%1 %2 %3 %4\n").arg(time, link, QString(direction), hexText(bytes)).toUtf8());
    m_log.flush();
}

Failure DeviceLinks::silence(Link link, const QString &complaint) const
{
    const WatchedLink &watched = at(link);
    if (watched.wasLost())
        return {ExitCode::noAnswer,
                QString("the port %1 of %2 went away").arg(watched.name(), nameOf(link)),
                "Plug it in again and give the same command once more."};
    const QString header = QString("%1 %2")
                               .arg(m_device.header1, 2, 16, QChar('0'))
                               .arg(m_device.header2, 2, 16, QChar('0'));
    const QString cause =
        QString("%1 on %2 (%3): last sent %4; %5 bytes received since; %6 bit/s, "
                "header %7, CRC %8")
            .arg(complaint, nameOf(link), watched.name(), hexText(watched.lastSent()))
            .arg(watched.receivedSince())
            .arg(rate(link))
            .arg(header.toUpper(), m_device.crcEnabled ? "on" : "off");
    const char *remedy = "Is the module on, and its wires at this port? Rate, header and CRC must "
                         "be the module's.";
    if (watched.answer().contains("NG"))
        remedy = "The module refused it.";
    else if (watched.receivedSince() > 0)
        remedy = "Something answers: compare rate, header and CRC with the module's.";
    else if (watched.receivedInExchange() > 0)
        remedy = "The module may answer too late: give it longer with --timeout MS.";
    return {ExitCode::noAnswer, cause, remedy};
}
