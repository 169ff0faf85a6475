#pragma once

#include "simulator/module.h"
#include "simulator/pseudo_terminal.h"
#include "simulator/reply_queue.h"

namespace k7 {

/// How well the module and its wiring behave.
struct Behaviour
{
    /// Milliseconds before each reply.
    int delay = 0;
    /// Commands are carried out, replies are not sent.
    bool silent = false;
    /// Garbage goes before each reply. It never looks like part of a reply.
    bool noisy = false;
    /// Replies come in pieces of that many bytes, a few milliseconds apart; 0 sends them whole.
    int split = 0;
    /// Both terminals hang up when that many bytes have been received on them since start(); with 0
    /// at the first byte, below 0 never.
    int hangUpAfter = -1;
};

/// A display module on two pseudo-terminals, which the tool opens like serial ports.
class Simulator : public QObject
{
    Q_OBJECT

public:
    explicit Simulator(const FrameFormat &format = FrameFormat(), QObject *parent = nullptr);

    /// Opens both terminals. False when the system has none left; nothing is open then. Called
    /// again it plugs the module in anew: its memory is as it was, its paths are others.
    bool start();
    /// Device files for the tool; empty before start() and after a hang-up.
    QString uartPath() const { return m_uart.path(); }
    QString ed2Path() const { return m_ed2.path(); }

    Module &module() { return m_module; }
    /// Holds for what is received from now on.
    void setBehaviour(const Behaviour &behaviour) { m_behaviour = behaviour; }
    /// Pulls the plug: both devices disappear, replies that have not gone out are dropped.
    void hangUp();

signals:
    /// A frame was understood; one line without a line break.
    void traced(const QString &line);
    /// Both devices are gone.
    void hungUp();

private:
    void unplug();
    void wire(Link link, PseudoTerminal &terminal, ReplyQueue &replies);
    void receive(Link link, const QByteArray &bytes, ReplyQueue &replies);
    QByteArray noise() const;

    Module m_module;
    Behaviour m_behaviour;
    PseudoTerminal m_uart;
    PseudoTerminal m_ed2;
    ReplyQueue m_uartReplies;
    ReplyQueue m_ed2Replies;
    qint64 m_receivedBytes = 0;
};

} // namespace k7
