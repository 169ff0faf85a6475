#include "simulator/simulator.h"

#include "simulator/direct_wire.h"

#include <memory>

namespace k7 {

namespace {

constexpr qint64 nanosecondsPerMillisecond = 1'000'000;

const char *portName(Link link)
{
    return link == Link::Uart2 ? "SIM-UART2" : "SIM-ED2";
}

Wire *makeWire(Link link, Way way, QObject *parent)
{
    return way == Way::Terminals ? makeTerminal(parent) : new DirectWire(portName(link), parent);
}

} // namespace

Simulator::Simulator(const ModuleSettings &settings, const SharedTime *time, QObject *parent)
    : QObject(parent)
    , m_module(settings)
    , m_uart{Link::Uart2, LineQueue(settings.rate(Link::Uart2)), settings.rate(Link::Uart2),
             Adapter(1)}
    , m_ed2{Link::Ed2, LineQueue(settings.rate(Link::Ed2)), settings.rate(Link::Ed2), Adapter(2)}
    , m_time(time)
{
    m_module.setTrace([this](const QString &line) { emit traced(line); });
    m_module.setScreenChanged([this] { emit screenChanged(); });
    m_clock.start();
    m_turns.setSingleShot(true);
    m_turns.setInterval(m_time ? m_time->turn() : 1);
    m_turns.setTimerType(Qt::PreciseTimer);
    connect(&m_turns, &QTimer::timeout, this, &Simulator::onTurn);
}

bool Simulator::start()
{
    const std::unique_ptr<Wire> terminal(makeTerminal(nullptr));
    return start(terminal ? Way::Terminals : Way::InProcess);
}

bool Simulator::start(Way way)
{
    return start(makeWire(Link::Uart2, way, this), makeWire(Link::Ed2, way, this));
}

bool Simulator::start(Wire *uart, Wire *ed2)
{
    unplug();
    m_receivedBytes = 0;
    plugIn(m_uart, uart);
    plugIn(m_ed2, ed2);
    if ((uart || ed2) && (!uart || uart->open()) && (!ed2 || ed2->open()))
        return true;
    unplug();
    return false;
}

void Simulator::plugIn(Channel &channel, Wire *wire)
{
    channel.heardRate = m_module.settings().rate(channel.link);
    channel.wire = wire;
    if (!wire)
        return;
    wire->setParent(this);
    connect(wire, &Wire::received, this,
            [this, &channel](const QByteArray &bytes, int rate) { receive(channel, bytes, rate); });
    connect(wire, &Wire::lost, this, &Simulator::hangUp);
}

DirectWire *Simulator::directWire(const QString &portName) const
{
    for (const Channel *channel : {&m_uart, &m_ed2})
        if (!portName.isEmpty() && pathOf(*channel) == portName)
            return qobject_cast<DirectWire *>(channel->wire);
    return nullptr;
}

void Simulator::setBehaviour(const Behaviour &behaviour)
{
    m_behaviour = behaviour;
    m_module.setProgrammingTakesTime(behaviour.realTime);
    m_module.setFlashProtected(behaviour.flashProtected);
    m_uart.replies.setWiring(behaviour);
    m_ed2.replies.setWiring(behaviour);
}

void Simulator::configure(const ModuleSettings &settings)
{
    m_module.configure(settings);
    for (Channel *channel : {&m_uart, &m_ed2}) {
        channel->line = LineQueue(settings.rate(channel->link));
        channel->heardRate = settings.rate(channel->link);
    }
}

void Simulator::receive(Channel &channel, const QByteArray &bytes, int rate)
{
    const bool mayHangUp = m_behaviour.hangUpAfter >= 0;
    const qint64 allowed = mayHangUp ? m_behaviour.hangUpAfter - m_receivedBytes : bytes.size();
    const QByteArray taken = bytes.left(static_cast<int>(qBound<qint64>(0, allowed, bytes.size())));
    m_receivedBytes += taken.size();

    if (hears(channel, rate)) {
        if (m_behaviour.realTime || !channel.line.isEmpty())
            channel.line.send(taken, now());
        else
            deliver(channel, taken, now());
        look();
    }
    if (mayHangUp && m_receivedBytes >= m_behaviour.hangUpAfter)
        hangUp();
}

bool Simulator::hears(Channel &channel, int rate)
{
    const int own = m_module.settings().rate(channel.link);
    if (rate != own && rate != channel.heardRate)
        emit traced(QString("%1 hears garbage: %2 bit/s instead of %3")
                        .arg(channel.link == Link::Uart2 ? "UART2" : "ED2")
                        .arg(rate)
                        .arg(own));
    channel.heardRate = rate;
    return rate == own;
}

void Simulator::onTurn()
{
    m_lag = qMax(m_lag, now() - m_turnDue);
    look();
}

void Simulator::look()
{
    bool isOnTheLine = false;
    bool isWaiting = false;
    for (Channel *channel : {&m_uart, &m_ed2}) {
        deliverArrived(*channel);
        for (QByteArray due; !(due = channel->replies.takeDue(now())).isEmpty();)
            if (channel->wire)
                channel->wire->write(due);
        isOnTheLine = isOnTheLine || !channel->line.isEmpty();
        isWaiting = isWaiting || !channel->replies.isEmpty();
    }
    if (!isOnTheLine)
        m_lag = 0;
    // What is on its way is looked for every millisecond; empty lines wake nobody.
    if ((isOnTheLine || isWaiting) && !m_turns.isActive()) {
        m_turnDue = now() + nanosecondsPerMillisecond;
        m_turns.start();
    }
}

void Simulator::deliverArrived(Channel &channel)
{
    // A real module does not wait for a busy computer. This one reads late, looks late, and its
    // reply is read late; so bytes are taken as much earlier as the event loop has been late.
    const QByteArray arrived =
        channel.line.takeArrived(now() + nanosecondsPerMillisecond + 3 * m_lag);
    if (!arrived.isEmpty())
        deliver(channel, arrived, channel.line.lastArrival());
}

void Simulator::deliver(Channel &channel, const QByteArray &bytes, qint64 arrival)
{
    for (const QByteArray &reply :
         m_module.receive(channel.link, bytes, arrival / nanosecondsPerMillisecond)) {
        if (m_behaviour.silent)
            continue;
        const QByteArray sent = noise() + reply;
        const qint64 onTheLine =
            m_behaviour.realTime ? channel.line.timeOf(sent.size()) / nanosecondsPerMillisecond : 0;
        channel.replies.enqueue(sent, (m_behaviour.delay + onTheLine) * nanosecondsPerMillisecond,
                                now());
    }
}

QByteArray Simulator::noise() const
{
    if (!m_behaviour.noisy)
        return {};
    QByteArray garbage = QByteArrayLiteral("\xFF\x13\x80\xFE\x37\x21\x7F");
    // Without the first header byte nothing in it can start a frame.
    return garbage.replace(static_cast<char>(m_module.settings().format.header1), "");
}

void Simulator::hangUp()
{
    unplug();
    emit hungUp();
}

void Simulator::unplug()
{
    for (Channel *channel : {&m_uart, &m_ed2}) {
        channel->replies.clear();
        channel->line.clear();
        if (!channel->wire)
            continue;
        channel->wire->hangUp();
        // This may be called while a signal of the wire is handled.
        channel->wire->disconnect(this);
        channel->wire->deleteLater();
        channel->wire = nullptr;
    }
    m_module.dropUnfinishedFrames();
}

QString Simulator::pathOf(const Channel &channel)
{
    return channel.wire ? channel.wire->path() : QString();
}

} // namespace k7
