#include "bench/faulty_world.h"

#include "simulator/bytes.h"

#include <utility>

/// The tool's end of one line.
class FaultyLink final : public SerialLink
{
public:
    FaultyLink(FaultyWorld &world, k7::Link link) : m_world(world), m_link(link) {}

    void setPortName(const QString &) override {}
    void setBaudRate(int) override {}
    bool open() override
    {
        if (m_isOpen || !m_world.isPlugged())
            return false;
        m_input.clear();
        return m_isOpen = true;
    }
    bool isOpen() const override { return m_isOpen; }
    OpenFailure openFailure() const override { return OpenFailure::NoSuchPort; }
    void close() override { m_isOpen = false; }
    void write(const QByteArray &bytes) override
    {
        if (m_isOpen)
            m_world.write(m_link, bytes);
    }
    QByteArray readAll() override { return std::exchange(m_input, {}); }
    void poll() override
    {
        if (!m_input.isEmpty())
            emit readyRead();
    }

    void take(const QByteArray &bytes)
    {
        if (m_isOpen)
            m_input += bytes;
    }
    void lose()
    {
        m_input.clear();
        if (std::exchange(m_isOpen, false))
            emit lost();
    }

private:
    FaultyWorld &m_world;
    const k7::Link m_link;
    bool m_isOpen = false;
    QByteArray m_input;
};

FaultyWorld::FaultyWorld(const Nature &nature)
    : m_nature(nature)
    , m_module(nature.module)
    , m_random(nature.seed)
    , m_channels{{{k7::Link::Uart2, k7::LineQueue(nature.module.rate(k7::Link::Uart2)),
                   k7::Adapter(nature.seed + 1)},
                  {k7::Link::Ed2, k7::LineQueue(nature.module.rate(k7::Link::Ed2)),
                   k7::Adapter(nature.seed + 2)}}}
{
    m_module.setProgrammingTakesTime(true);
    connect(&m_turns, &QTimer::timeout, this, &FaultyWorld::turn);
    m_turns.start(0);
}

Links FaultyWorld::links()
{
    Links links;
    for (const auto &[link, end] :
         {std::pair(k7::Link::Uart2, &links.uart), {k7::Link::Ed2, &links.ed2}}) {
        auto tool = std::make_unique<FaultyLink>(*this, link);
        channel(link).tool = tool.get();
        *end = std::move(tool);
    }
    links.time = {[this] { return nanoseconds(); }, 0};
    return links;
}

bool FaultyWorld::isPlugged() const
{
    const bool isAway = m_nature.leaves != never && m_now >= m_nature.leaves;
    return !isOver() && (!isAway || m_now >= m_nature.returns);
}

void FaultyWorld::rest(int milliseconds)
{
    for (int i = 0; i < milliseconds; ++i)
        pass();
}

void FaultyWorld::write(k7::Link link, const QByteArray &bytes)
{
    channel(link).line.send(bytes, nanoseconds());
    if (link == k7::Link::Ed2 && bytes.size() <= 8 && bytes.startsWith("\x5A\xA5"))
        ++m_announced;
}

void FaultyWorld::turn()
{
    if (m_now >= 2 * limit)
        qFatal("seed %u never ends", m_nature.seed);
    // Every now and then the computer is busy with something else.
    const int passed = m_random.happens(5) ? 5 + m_random.upTo(45) : 1 + m_random.upTo(3);
    rest(passed);
    for (const Channel &each : m_channels)
        if (each.tool)
            each.tool->poll();
}

void FaultyWorld::pass()
{
    const bool wasPlugged = isPlugged();
    ++m_now;
    if (wasPlugged && !isPlugged())
        unplug();
    for (Channel &each : m_channels)
        carry(each);
}

void FaultyWorld::carry(Channel &channel)
{
    const QByteArray arrived = channel.line.takeArrived(nanoseconds());
    if (!arrived.isEmpty())
        for (const QByteArray &reply : m_module.receive(channel.link, arrived, m_now)) {
            k7::Wiring wiring = m_nature.wiring;
            if (!mayFlip(channel.link, reply))
                wiring.flipped = 0;
            channel.adapter.setWiring(wiring);
            channel.adapter.enqueue(reply, channel.line.timeOf(reply.size()), nanoseconds());
        }
    for (QByteArray due; !(due = channel.adapter.takeDue(nanoseconds())).isEmpty();)
        if (channel.tool && isPlugged())
            channel.tool->take(due);
}

/// A wrong bit in what a reply without a CRC tells looks like another value, which nobody can see.
bool FaultyWorld::mayFlip(k7::Link link, const QByteArray &reply) const
{
    constexpr int readRegisters = 0x81;
    constexpr int readVp = 0x83;
    const int command = k7::byteAt(reply, 3);
    const bool tells = command == readRegisters || command == readVp;
    return !tells || (link == k7::Link::Uart2 && m_nature.module.format.crcEnabled);
}

void FaultyWorld::unplug()
{
    // The module stays on: it waits for the rest of what it was sent.
    for (Channel &each : m_channels) {
        each.line.clear();
        each.adapter.clear();
        if (each.tool)
            each.tool->lose();
    }
}
