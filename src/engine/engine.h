#pragma once

#include "engine/heartbeat.h"
#include "engine/line.h"
#include "engine/step_dispatch.h"
#include "engine/traffic_log.h"
#include "engine/transaction.h"
#include "serial/reply_receiver.h"

#include <QVector>

#include <array>
#include <functional>

class SystemReset;

/// Everything that talks to a module: the frames, the session with its heartbeat and steps, and
/// what is received over both links. It knows no window, no settings file and no language.
///
/// One exchange runs at a time; starting another one takes its place. What an exchange brings
/// stands in mirrors() when vpRead() or registersRead() says so, how it went is told by ended().
class Engine : public QObject
{
    Q_OBJECT

public:
    /// Works on the links `uart` and `ed2`, of devices or of a simulated module, and tells the user
    /// what happens through `notices`; all three outlive it. Nothing runs before start().
    Engine(SerialLink &uart, SerialLink &ed2, Notices &notices, const StepPolicy &policy = {},
           const TimeSource &time = {}, QObject *parent = nullptr);
    ~Engine() override;

    /// Starts the heartbeat: one tick every millisecond.
    void start() { m_heartbeat.start(); }
    const Heartbeat &heartbeat() const { return m_heartbeat; }

    /// Port and rate of the UART2 link, and the header bytes and CRC switch of all frames. The port
    /// counts from the next opening on.
    void useUart(const SerialSettings &settings);
    /// Port and rate of the ED2 link; its frames are like those of UART2.
    void useEd2(const SerialSettings &settings);

    /// What the module's registers and VP words hold, as far as they were read or written.
    const FrameBuilder &mirrors() const { return m_builder; }
    /// What went over UART2 in single frames, and all that came back.
    TrafficLog &trafficLog() { return m_trafficLog; }

    // Exchanges of one frame. Ranges are asked for at the tick that sends the frame; their fields
    // take the low bits of what does not fit.

    struct Range
    {
        int page = 0; ///< of registers
        int address = 0;
        int length = 0; ///< in registers or words
    };
    using RangeSource = std::function<Range()>;

    void readRegisters(RangeSource range);
    /// Lengths count modulo 126: a longer reply would not fit its length byte.
    void readVp(RangeSource range);
    // These do nothing, and tell so, when the data do not fit into one frame or into the memory.
    bool writeRegisters(RangeSource range, const QByteArray &bytes);
    bool writeVp(int address, const QVector<quint16> &words);
    /// `samples` of the channels whose bit is set in `mask`; as many go out as each of them has.
    bool sendCurve(const std::array<QVector<quint16>, FrameBuilder::channels> &samples,
                   quint8 mask);
    /// Sends `bytes` as they stand: no header, length or CRC is added. Listens for `ticks`.
    void sendFreeForm(std::function<QByteArray()> bytes, int ticks = Transaction::endTick);
    void resetSystem();

    /// Ends what runs, at once and without a word. The UART2 port is closed, not that of ED2: the
    /// next exchange on it finds it open. That is wanted.
    void stop();
    bool isIdle() const { return m_session.commandType == commandType::idle; }

    /// Makes a step for one of the lines below known, and returns it. It lives as long as the
    /// engine.
    template<typename StepClass>
    StepClass &add(std::unique_ptr<StepClass> step)
    {
        StepClass &added = *step;
        m_dispatch.add(std::move(step));
        return added;
    }
    Line uart();
    Line ed2();

signals:
    void registersRead();
    /// A read-VP reply from `startAddress` on is in the mirror.
    void vpRead(quint16 startAddress);
    // As ExchangeReports tells them.
    void progressed(int type, int percent);
    void repeated(int type, int time);
    void ended(int type, Outcome outcome);

private:
    void connectLinks();

    SerialLink &m_uart;
    SerialLink &m_ed2;
    Notices &m_notices;
    const StepPolicy m_policy;
    SerialSettings m_uartSettings;
    SerialSettings m_ed2Settings;
    DownloadSession m_session;
    FrameBuilder m_builder;
    ReplyReceiver m_uartReplies{uartReceiveRules, m_builder, m_session.replyReceived};
    ReplyReceiver m_ed2Replies{ed2ReceiveRules, m_builder, m_session.replyReceived};
    TrafficLog m_trafficLog;
    ExchangeReports m_reports;
    StepDispatch m_dispatch{m_session};
    Heartbeat m_heartbeat;

    Transaction &m_readRegisters;
    Transaction &m_readVp;
    Transaction &m_writeRegisters;
    Transaction &m_writeVp;
    Transaction &m_curve;
    Transaction &m_freeForm;
    SystemReset &m_systemReset;
};
