#pragma once

#include "engine/links.h"
#include "simulator/adapter.h"
#include "simulator/line_queue.h"
#include "simulator/module.h"

#include <QPointer>
#include <QTimer>

#include <array>

class FaultyLink;

/// Where tool and module meet: two lines to the module, an adapter before each reply, a computer
/// with other things to do, and a time that passes as fast as the event loop turns. What happens
/// depends on nothing but its seed and what the tool does.
class FaultyWorld final : public QObject
{
public:
    static constexpr qint64 never = -1;
    /// The milliseconds that a session may take; behind that the ports go away for good.
    static constexpr qint64 limit = 600'000;

    struct Nature
    {
        quint32 seed = 0;
        k7::ModuleSettings module;
        k7::Wiring wiring;
        qint64 leaves = never; ///< the millisecond at which both ports go away
        qint64 returns = 0;    ///< and that at which they are back
    };

    explicit FaultyWorld(const Nature &nature);

    /// The tool's ends of both lines; whatever their ports are called.
    Links links();
    k7::Module &module() { return m_module; }
    qint64 milliseconds() const { return m_now; }
    bool isPlugged() const;
    bool isOver() const { return m_now >= limit; }
    /// How many blocks and pictures the tool has announced over ED2.
    int announced() const { return m_announced; }
    /// Lets `milliseconds` pass while the tool does nothing.
    void rest(int milliseconds);

    /// For the links.
    void write(k7::Link link, const QByteArray &bytes);

private:
    struct Channel
    {
        k7::Link link;
        k7::LineQueue line;
        k7::Adapter adapter;
        QPointer<FaultyLink> tool{};
    };

    qint64 nanoseconds() const { return m_now * 1'000'000; }
    Channel &channel(k7::Link link) { return m_channels[static_cast<size_t>(link)]; }
    void turn();
    /// Lets a millisecond pass.
    void pass();
    void carry(Channel &channel);
    bool mayFlip(k7::Link link, const QByteArray &reply) const;
    void unplug();

    const Nature m_nature;
    k7::Module m_module;
    k7::Random m_random;
    std::array<Channel, 2> m_channels;
    QTimer m_turns;
    qint64 m_now = 0;
    int m_announced = 0;
};
