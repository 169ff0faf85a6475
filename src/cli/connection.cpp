#include "cli/connection.h"

#include "cli/interrupt.h"
#include "cli/ports.h"
#include "cli/report.h"
#include "serial/device_values.h"
#include "simulator/direct_link.h"
#include "simulator/shared_time.h"
#include "simulator/simulator.h"

#include <QDateTime>
#include <QEventLoop>

namespace {

constexpr int wordsAtOnce = 120; ///< fit into one frame and into one reply, also with a CRC
constexpr int registersAtOnce = 240;

const char *nameOf(Connection::Link link)
{
    return link == Connection::Link::Uart2 ? "UART2" : "ED2";
}

/// The bytes as people write them; of a long block the first ones.
QString hexText(const QByteArray &bytes)
{
    constexpr int shown = 32;
    const QString digits = QString::fromLatin1(bytes.left(shown).toHex(' ').toUpper());
    return bytes.size() <= shown ? digits
                                 : QString("%1 … (%2 bytes)").arg(digits).arg(bytes.size());
}

} // namespace

/// A simulated module, as slow as a real one.
struct Connection::Simulation
{
    Simulation(const Device &device, const k7::Wiring &wiring) : module(settingsFor(device), &time)
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

    static k7::ModuleSettings settingsFor(const Device &device)
    {
        k7::ModuleSettings settings;
        settings.format = {device.header1, device.header2, device.crcEnabled};
        settings.layout = static_cast<k7::Layout>(device.model);
        settings.uartRate = device.uart2.rate;
        settings.screen = device.screen.value_or(settings.screen);
        return settings;
    }

    k7::SharedTime time{k7::SharedTime::Pace::OfTheSystem};
    k7::Simulator module;
};

Connection::WatchedLinks::WatchedLinks(Links links)
    : uart(std::make_unique<WatchedLink>(std::move(links.uart)))
    , ed2(std::make_unique<WatchedLink>(std::move(links.ed2)))
    , time(links.time)
{
}

Connection::Connection(const Device &device, const Setup &setup, Report &report)
    : m_device(device)
    , m_setup(setup)
    , m_report(report)
    , m_simulation(setup.isSimulated ? std::make_unique<Simulation>(device, setup.wiring) : nullptr)
    , m_links(m_simulation ? m_simulation->links() : setup.links())
    , m_engine(*m_links.uart, *m_links.ed2, m_messages, StepPolicy(), m_links.time)
    , m_downloads(m_engine)
    , m_comparison(m_engine.add(std::make_unique<CrcComparison>(m_engine.uart())))
{
    connect(&m_engine, &Engine::ended, this, [this](int, Outcome outcome) {
        if (m_outcome == Outcome::Done)
            m_outcome = outcome;
    });
    connect(&m_engine, &Engine::progressed, this, [this](int, int percent) {
        m_progressAt = now();
        m_bytesAtProgress = sentBytes();
        if (!m_what.isEmpty())
            m_report.progress(m_what, m_progressFrom + percent * (100 - m_progressFrom) / 100);
    });
    connect(&m_engine.heartbeat(), &Heartbeat::fired, this, &Connection::onBeat);
    if (!setup.logFile.isEmpty())
        openLog(setup.logFile);
    m_engine.start();
}

Connection::~Connection() = default;

void Connection::openLog(const QString &path)
{
    m_log.setFileName(path);
    if (!m_log.open(QIODevice::WriteOnly | QIODevice::Append))
        throw Failure{ExitCode::badFile, path + " cannot be written: " + m_log.errorString(),
                      "Choose another file for --log."};
    for (const Link each : {Link::Uart2, Link::Ed2}) {
        const char *name = nameOf(each);
        connect(&link(each), &WatchedLink::sent, this,
                [this, name](const QByteArray &bytes) { log(name, '>', bytes); });
        connect(&link(each), &WatchedLink::received, this,
                [this, name](const QByteArray &bytes) { log(name, '<', bytes); });
    }
}

void Connection::log(const char *link, char direction, const QByteArray &bytes)
{
    const QString time = QDateTime::currentDateTime().toString("yyyy-MM-dd HH:mm:ss.zzz");
    m_log.write(
        QString("%1 %2 %3 %4\n").arg(time, link, QString(direction), hexText(bytes)).toUtf8());
    m_log.flush();
}

void Connection::prepare(Link link)
{
    bool &isPrepared = m_isPrepared[static_cast<size_t>(link)];
    if (isPrepared)
        return;
    const bool isUart = link == Link::Uart2;
    Device::Port port = isUart ? m_device.uart2 : m_device.ed2;
    if (m_simulation)
        port.name = isUart ? m_simulation->module.uartPath() : m_simulation->module.ed2Path();
    else if (!port.name.isEmpty())
        port.name = ports::resolved(port.name);
    else if (isUart)
        port.name = ports::only();
    else
        throw Failure{ExitCode::noPort, "no port is named for ED2",
                      "Name it with --ed2 PORT; `k7 ports` lists the ports of the system."};
    const SerialSettings settings{port.name, port.rate, m_device.header1, m_device.header2,
                                  m_device.crcEnabled};
    if (isUart)
        m_engine.useUart(settings);
    else
        m_engine.useEd2(settings);
    // ED2 replies carry the header of UART2, which may not be in use at all.
    if (!isUart && !m_isPrepared[static_cast<size_t>(Link::Uart2)])
        m_engine.useUart(
            {{}, m_device.uart2.rate, m_device.header1, m_device.header2, m_device.crcEnabled});
    isPrepared = true;
}

void Connection::run(Link link, const QString &what, const std::function<void()> &start,
                     int patience)
{
    prepare(link);
    m_what = what;
    m_patience = patience;
    Outcome outcome = Outcome::Done;
    awaitPort(link, [&] {
        outcome = attempt(start);
        return outcome != Outcome::NotOpened;
    });
    m_what.clear();
    if (interrupt::isPending())
        throw Failure{ExitCode::interrupted, "interrupted", {}};
    if (m_isGivenUp)
        throw silence(link, "the exchange did not get any further");
    if (outcome != Outcome::Done)
        throw silence(link, "no acknowledgement");
}

void Connection::awaitPort(Link link, const std::function<bool()> &isOpened)
{
    const qint64 start = now();
    while (!isOpened()) {
        const OpenFailure reason = this->link(link).openFailure();
        const bool mayPass = reason == OpenFailure::NoSuchPort || reason == OpenFailure::InUse;
        if (!mayPass || static_cast<double>(now() - start) >= 1000 * m_setup.waitSeconds)
            throw ports::openFailure(nameOf(link), this->link(link).name(), reason);
        pause(100);
    }
}

void Connection::listen(const QVector<Link> &links, const std::function<void()> &look)
{
    for (const Link each : links) {
        prepare(each);
        awaitPort(each, [this, each] { return link(each).open(); });
    }
    while (true) {
        pause(50);
        look();
        for (const Link each : links)
            if (link(each).wasLost())
                throw silence(each, {});
    }
}

Outcome Connection::attempt(const std::function<void()> &start)
{
    m_outcome = Outcome::Done;
    m_isGivenUp = false;
    m_bytesAtProgress = sentBytes();
    m_progressAt = now();
    QEventLoop loop;
    start();
    // An exchange may end by starting another one, as that of an operating system does.
    const auto end = connect(&m_engine.heartbeat(), &Heartbeat::fired, &loop, [this, &loop] {
        if (m_engine.isIdle())
            loop.quit();
    });
    if (!m_engine.isIdle())
        loop.exec();
    disconnect(end);
    return m_outcome;
}

qint64 Connection::sentBytes() const
{
    return m_links.uart->sentBytes() + m_links.ed2->sentBytes();
}

void Connection::onBeat()
{
    if (m_engine.isIdle())
        return;
    // A module that answers and never gets any further must not keep anybody waiting; while bytes
    // are on a slow line there is nothing to complain of.
    constexpr int bitsPerByte = 13; // with room for pauses
    const qint64 bytes = sentBytes() - m_bytesAtProgress;
    const int rate = link(Link::Uart2).isOpen() ? m_device.uart2.rate : m_device.ed2.rate;
    if (now() - m_progressAt > m_patience + bytes * bitsPerByte * 1000 / rate)
        m_isGivenUp = true;
    // Not in the middle of a frame.
    const bool isSending = link(Link::Uart2).bytesToSend() + link(Link::Ed2).bytesToSend() > 0;
    if (m_isGivenUp || (interrupt::isPending() && !isSending)) {
        m_engine.stop();
        link(Link::Ed2).close();
    }
}

void Connection::pause(int milliseconds)
{
    const qint64 end = now() + milliseconds;
    QEventLoop loop;
    const auto look = connect(&m_engine.heartbeat(), &Heartbeat::fired, &loop, [&] {
        if (now() >= end || interrupt::isPending())
            loop.quit();
    });
    loop.exec();
    disconnect(look);
    if (interrupt::isPending())
        throw Failure{ExitCode::interrupted, "interrupted", {}};
}

Failure Connection::silence(Link link, const QString &complaint)
{
    const WatchedLink &watched = this->link(link);
    if (watched.wasLost())
        return {ExitCode::noAnswer,
                QString("the port %1 of %2 went away").arg(watched.name(), nameOf(link)),
                "Plug it in again and give the same command once more."};
    const int rate = link == Link::Uart2 ? m_device.uart2.rate : m_device.ed2.rate;
    const QString header = QString("%1 %2")
                               .arg(m_device.header1, 2, 16, QChar('0'))
                               .arg(m_device.header2, 2, 16, QChar('0'));
    const QString cause =
        QString("%1 on %2 (%3): last sent %4; %5 bytes received since; %6 bit/s, "
                "header %7, CRC %8")
            .arg(complaint, nameOf(link), watched.name(), hexText(watched.lastSent()))
            .arg(watched.receivedSince())
            .arg(rate)
            .arg(header.toUpper(), m_device.crcEnabled ? "on" : "off");
    const QString remedy =
        watched.receivedSince() > 0
            ? "Something answers: compare rate, header and CRC with the module's."
            : "Is the module on, and its wires at this port? Rate, header and "
              "CRC must be the module's.";
    return {ExitCode::noAnswer, cause, remedy};
}

QVector<quint16> Connection::readVp(int address, int count)
{
    QVector<quint16> words;
    const int end = qMin(FrameBuilder::vpWords, address + count);
    for (int from = address; from < end; from += wordsAtOnce) {
        const int length = qMin(wordsAtOnce, end - from);
        bool hasArrived = false;
        const auto arrival =
            connect(&m_engine, &Engine::vpRead, this, [&hasArrived, from](quint16 start) {
                hasArrived = hasArrived || start == from;
            });
        run(Link::Uart2, {}, [=] {
            m_engine.readVp([=] { return Engine::Range{0, from, length}; });
        });
        disconnect(arrival);
        if (!hasArrived)
            throw silence(Link::Uart2, "no reply");
        for (int i = 0; i < length; ++i)
            words.append(m_engine.mirrors().vpAt(from + i));
    }
    return words;
}

QByteArray Connection::readRegisters(int page, int address, int count)
{
    QByteArray bytes;
    const int end = qMin(FrameBuilder::registersPerPage, address + count);
    for (int from = address; from < end; from += registersAtOnce) {
        const int length = qMin(registersAtOnce, end - from);
        bool hasArrived = false;
        const auto arrival =
            connect(&m_engine, &Engine::registersRead, this, [&hasArrived] { hasArrived = true; });
        run(Link::Uart2, {}, [=] {
            m_engine.readRegisters([=] { return Engine::Range{page, from, length}; });
        });
        disconnect(arrival);
        if (!hasArrived)
            throw silence(Link::Uart2, "no reply");
        for (int i = 0; i < length; ++i)
            bytes.append(static_cast<char>(m_engine.mirrors().registerAt(page, from + i)));
    }
    return bytes;
}

void Connection::writeVp(int address, const QVector<quint16> &words)
{
    for (int from = 0; from < words.size(); from += wordsAtOnce)
        run(Link::Uart2, {},
            [&] { m_engine.writeVp(address + from, words.mid(from, wordsAtOnce)); });
}

void Connection::writeRegisters(int page, int address, const QByteArray &bytes)
{
    for (int from = 0; from < bytes.size(); from += registersAtOnce)
        run(Link::Uart2, {}, [&] {
            const QByteArray part = bytes.mid(from, registersAtOnce);
            const Engine::Range range{page, address + from, part.size()};
            m_engine.writeRegisters([range] { return range; }, part);
        });
}

void Connection::compare(QVector<CrcCheckItem> &items, const QString &what)
{
    // The module is given few milliseconds to acknowledge; one that is busy is asked again.
    constexpr int attempts = 5;
    int failures = 0;
    for (int first = 0; first < items.size();) {
        m_comparison.setItems(items.mid(first));
        m_progressFrom = 100 * first / items.size();
        try {
            run(Link::Uart2, what, [this] { m_comparison.start(); });
        } catch (const Failure &failure) {
            const bool isLost = link(Link::Uart2).wasLost() || m_isGivenUp;
            failures = m_comparison.answered() > 0 ? 1 : failures + 1;
            if (failure.code != ExitCode::noAnswer || isLost || failures == attempts)
                throw;
            pause(50 * failures);
        }
        for (int i = 0; i < m_comparison.answered(); ++i)
            items[first + i] = m_comparison.items().at(i);
        first += m_comparison.answered();
    }
    m_progressFrom = 0;
}

QString Connection::deviceId()
{
    readVp(deviceValues::deviceId.address, deviceValues::deviceId.words);
    return deviceValues::deviceIdText(m_engine.mirrors());
}

void Connection::expectDevice()
{
    if (m_device.id.isEmpty() || m_isExpected)
        return;
    const QString id = deviceId();
    if (id != m_device.id)
        throw Failure{ExitCode::noPort,
                      QString("the module has the device ID %1, not %2").arg(id, m_device.id),
                      "Nothing was written. Connect the right module, or correct the ID in "
                      "devices.ini."};
    m_isExpected = true;
}
