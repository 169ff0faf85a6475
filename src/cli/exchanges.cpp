#include "cli/exchanges.h"

#include "cli/interrupt.h"
#include "cli/memory.h"
#include "cli/ports.h"
#include "cli/report.h"
#include "serial/device_values.h"

#include <QEventLoop>
#include <QTimer>

#include <limits>

namespace {

void throwIfInterrupted()
{
    if (interrupt::isPending())
        throw Failure{ExitCode::interrupted, "interrupted", {}};
}

} // namespace

Exchanges::Exchanges(DeviceLinks &links, const Patience &patience, Report &report)
    : m_links(links)
    , m_patience(patience)
    , m_report(report)
    , m_engine(links.at(Link::Uart2), links.at(Link::Ed2), m_messages,
               StepPolicy{true, patience.answer, patience.repeats}, links.time())
    , m_downloads(m_engine)
    , m_comparison(m_engine.add(std::make_unique<CrcComparison>(m_engine.uart())))
{
    connect(&m_engine, &Engine::progressed, this, [this](int, int percent) {
        m_progressAt = m_links.now();
        m_bytesAtProgress = m_links.sentBytes();
        if (!m_what.isEmpty())
            m_report.progress(m_what, percent);
    });
    connect(&m_engine, &Engine::repeated, this, [this](int, int time) {
        m_report.detail(QString("%1: no answer; sent again (%2)").arg(nameOf(m_link)).arg(time));
    });
    connect(&m_engine.heartbeat(), &Heartbeat::fired, this, &Exchanges::onBeat);
    m_engine.start();
}

void Exchanges::use(const Device &device)
{
    m_links.use(device);
    for (const Link each : {Link::Uart2, Link::Ed2})
        if (m_links.at(each).isOpen())
            apply(each);
}

void Exchanges::prepare(Link link)
{
    if (!m_links.at(link).isOpen())
        apply(link);
}

void Exchanges::apply(Link link)
{
    const SerialSettings settings = m_links.settings(link);
    if (link == Link::Uart2) {
        m_engine.useUart(settings);
        return;
    }
    m_engine.useEd2(settings);
    // ED2 replies carry the header of UART2, which may not be in use at all.
    if (!m_links.at(Link::Uart2).isOpen())
        m_engine.useUart({{},
                          m_links.rate(Link::Uart2),
                          settings.header1,
                          settings.header2,
                          settings.crcEnabled});
}

void Exchanges::run(Link link, const QString &what, const std::function<void()> &start,
                    int patience)
{
    awaitListed(link);
    prepare(link);
    m_link = link;
    m_what = what;
    m_exchangePatience = patience + (m_patience.repeats + 2) * m_patience.answer;
    Outcome outcome = Outcome::Done;
    awaitPort(link, [&] {
        outcome = attempt(start);
        return outcome != Outcome::NotOpened;
    });
    m_what.clear();
    throwIfInterrupted();
    if (m_isGivenUp)
        throw m_links.silence(link, "the exchange did not get any further");
    if (outcome != Outcome::Done)
        throw m_links.silence(link, m_isRead ? "no reply" : "no acknowledgement");
}

void Exchanges::awaitPort(Link link, const std::function<bool()> &isOpened)
{
    const qint64 start = m_links.now();
    while (!isOpened()) {
        const WatchedLink &port = m_links.at(link);
        const OpenFailure reason = port.openFailure();
        const bool mayPass = reason == OpenFailure::NoSuchPort || reason == OpenFailure::InUse;
        if (!mayPass || static_cast<double>(m_links.now() - start) >= 1000 * m_patience.seconds)
            throw ports::openFailure(nameOf(link), port.name(), reason);
        pause(100);
        prepare(link);
    }
}

void Exchanges::awaitListed(Link link)
{
    const bool isNamed =
        link == Link::Ed2 || m_links.isSimulated() || !m_links.device().uart2.name.isEmpty();
    const qint64 start = m_links.now();
    while (!isNamed && ports::isNoneListed() &&
           static_cast<double>(m_links.now() - start) < 1000 * m_patience.seconds)
        pause(100);
}

void Exchanges::hold(Link link)
{
    awaitListed(link);
    prepare(link);
    awaitPort(link, [this, link] { return m_links.at(link).isOpen() || m_links.at(link).open(); });
}

void Exchanges::listen(const QVector<Link> &links, const std::function<void()> &look,
                       const std::function<void(Link link, qint64 gap)> &tellGap)
{
    QEventLoop loop;
    interrupt::whenPending(&loop, [&loop] { loop.quit(); });
    for (const Link each : links) {
        hold(each);
        connect(&m_links.at(each), &WatchedLink::received, &loop, &QEventLoop::quit);
        connect(&m_links.at(each), &WatchedLink::lost, &loop, &QEventLoop::quit);
    }
    while (true) {
        throwIfInterrupted();
        look();
        const auto lost = std::find_if(links.begin(), links.end(),
                                       [this](Link each) { return m_links.at(each).wasLost(); });
        if (lost == links.end())
            loop.exec();
        else
            tellGap(*lost, awaitReturn(*lost));
    }
}

qint64 Exchanges::awaitReturn(Link link)
{
    constexpr int betweenLooks = 250;
    m_report.note(QString("%1: the port %2 went away; waiting for it")
                      .arg(nameOf(link), m_links.at(link).name()));
    const qint64 start = m_links.now();
    while (!m_links.at(link).isOpen() && !m_links.at(link).open()) {
        pause(betweenLooks);
        prepare(link);
    }
    return m_links.now() - start;
}

Outcome Exchanges::attempt(const std::function<void()> &start)
{
    m_outcome = Outcome::Done;
    m_isGivenUp = false;
    for (const Link each : {Link::Uart2, Link::Ed2}) {
        m_links.at(each).poll();
        m_links.at(each).beginExchange();
    }
    m_bytesAtProgress = m_links.sentBytes();
    m_bytesToSend = 0;
    m_progressAt = m_links.now();
    QEventLoop loop;
    const auto end = connect(&m_engine, &Engine::ended, &loop, [&](int type, Outcome outcome) {
        m_outcome = outcome;
        m_isRead = type == commandType::readRegister || type == commandType::readVp;
        loop.quit();
    });
    start();
    if (!m_engine.isIdle())
        loop.exec();
    disconnect(end);
    return m_outcome;
}

void Exchanges::onBeat()
{
    if (m_engine.isIdle())
        return;
    // A module that answers and never gets any further must not keep anybody waiting; while bytes
    // are on a slow line there is nothing to complain of.
    constexpr int bitsPerByte = 13; // with room for pauses
    const qint64 waiting = m_links.bytesToSend();
    if (waiting < m_bytesToSend)
        m_progressAt = m_links.now();
    m_bytesToSend = waiting;
    const qint64 bytes = m_links.sentBytes() - m_bytesAtProgress;
    const qint64 lineTime = bytes * bitsPerByte * 1000 / m_links.rate(m_link);
    if (m_links.now() - m_progressAt > m_exchangePatience + lineTime)
        m_isGivenUp = true;
    // Not in the middle of a frame.
    if (m_isGivenUp || (interrupt::isPending() && waiting == 0)) {
        m_engine.stop();
        m_links.at(Link::Ed2).abandon();
    }
}

void Exchanges::pause(qint64 milliseconds)
{
    const qint64 end = m_links.now() + milliseconds;
    QEventLoop loop;
    QTimer look;
    look.setTimerType(Qt::PreciseTimer);
    connect(&look, &QTimer::timeout, &loop, &QEventLoop::quit);
    interrupt::whenPending(&loop, [&loop] { loop.quit(); });
    while (m_links.now() < end && !interrupt::isPending()) {
        // A time that passes with the turns of the event loop takes as many.
        const qint64 rest = m_links.time().turn == 0 ? 0 : end - m_links.now();
        look.start(static_cast<int>(qMin<qint64>(rest, std::numeric_limits<int>::max())));
        loop.exec();
    }
    throwIfInterrupted();
}

void Exchanges::untilAnswered(qint64 milliseconds, const std::function<void()> &work)
{
    constexpr int betweenAttempts = 100;
    const qint64 end = m_links.now() + milliseconds;
    while (true) {
        try {
            work();
            return;
        } catch (const Failure &failure) {
            if (failure.code != ExitCode::noAnswer || m_links.now() >= end)
                throw;
        }
        pause(betweenAttempts);
    }
}

void Exchanges::awaitModule()
{
    if (m_patience.seconds > 0)
        untilAnswered(static_cast<qint64>(m_patience.seconds * 1000), [this] {
            memory::readVp(*this, deviceValues::version.address, deviceValues::version.words);
        });
}
