#pragma once

#include "simulator/adapter.h"
#include "simulator/line_queue.h"
#include "simulator/module.h"
#include "simulator/shared_time.h"

namespace k7 {

class DirectWire;
class Wire;

/// How well the module and its wiring behave.
struct Behaviour : Wiring
{
    /// Milliseconds before each reply.
    int delay = 0;
    /// Commands are carried out, replies are not sent.
    bool silent = false;
    /// Garbage goes before each reply. It never looks like part of a reply.
    bool noisy = false;
    /// Both links hang up when that many bytes have been received on them since start(); with 0 at
    /// the first byte, below 0 never.
    int hangUpAfter = -1;
    /// The module is as slow as its lines and its flash: bytes take line time, and what arrives
    /// while the flash is programmed is lost.
    bool realTime = false;
    /// What is written to the flash is acknowledged, and the flash stays as it is.
    bool flashProtected = false;
};

/// How the tool reaches the module.
enum class Way {
    Terminals, ///< two pseudo-terminals, which the tool opens like serial ports
    InProcess, ///< two ports SIM-UART2 and SIM-ED2, which a DirectLink opens
};

/// A display module and the wires to it.
///
/// On each link the module hears garbage at any rate but its own: nothing is understood, nothing is
/// answered, and a line of the trace says so when it begins.
class Simulator : public QObject
{
    Q_OBJECT

public:
    /// Without a `time` that it shares with the tool, its time is that of the system.
    explicit Simulator(const ModuleSettings &settings = ModuleSettings(),
                       const SharedTime *time = nullptr, QObject *parent = nullptr);

    /// Opens both links: on pseudo-terminals, or within the process on a system without them. False
    /// when it has none left; nothing is open then. Called again it plugs the module in anew: its
    /// memory is as it was, its pseudo-terminals are others.
    bool start();
    bool start(Way way);
    /// Opens wires of the caller's, which it takes over; a null one leaves its link unplugged.
    /// False when one cannot be opened, or there is none.
    bool start(Wire *uart, Wire *ed2);
    /// Ports for the tool; empty before start() and after a hang-up.
    QString uartPath() const { return pathOf(m_uart); }
    QString ed2Path() const { return pathOf(m_ed2); }
    /// The wire that a DirectLink opens as `portName`; null where there is none.
    DirectWire *directWire(const QString &portName) const;

    Module &module() { return m_module; }
    const Module &module() const { return m_module; }
    /// Holds for what is received from now on.
    void setBehaviour(const Behaviour &behaviour);
    /// Has the module start with other settings; its memory is as it was.
    void configure(const ModuleSettings &settings);
    /// Pulls the plug: both devices disappear, replies that have not gone out are dropped.
    void hangUp();

signals:
    /// A frame was understood, or something was lost; one line without a line break.
    void traced(const QString &line);
    /// What the screen shows may have changed.
    void screenChanged();
    /// Both devices are gone.
    void hungUp();

private:
    struct Channel
    {
        Link link;
        LineQueue line;
        int heardRate; ///< of the last bytes
        Adapter replies;
        Wire *wire = nullptr;
    };

    void plugIn(Channel &channel, Wire *wire);
    void receive(Channel &channel, const QByteArray &bytes, int rate);
    bool hears(Channel &channel, int rate);
    qint64 now() const { return m_time ? m_time->nanoseconds() : m_clock.nsecsElapsed(); }
    void onTurn();
    /// Takes in what has come to the end of the lines, and sends what is due.
    void look();
    void deliverArrived(Channel &channel);
    void deliver(Channel &channel, const QByteArray &bytes, qint64 arrival);
    void unplug();
    QByteArray noise() const;
    static QString pathOf(const Channel &channel);

    Module m_module;
    Behaviour m_behaviour;
    Channel m_uart;
    Channel m_ed2;
    qint64 m_receivedBytes = 0;
    const SharedTime *const m_time;
    QElapsedTimer m_clock; ///< where there is none
    QTimer m_turns;        ///< while anything is on its way
    qint64 m_turnDue = 0;
    qint64 m_lag = 0; ///< how late they were while bytes have been on a line, at most
};

} // namespace k7
