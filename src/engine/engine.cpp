#include "engine/engine.h"

#include "common/big_endian.h"
#include "engine/system_reset.h"

namespace {

using Answer = Transaction::Answer;

} // namespace

Engine::Engine(SerialLink &uart, SerialLink &ed2, Notices &notices, const StepPolicy &policy,
               const TimeSource &time, QObject *parent)
    : QObject(parent)
    , m_uart(uart)
    , m_ed2(ed2)
    , m_notices(notices)
    , m_policy(policy)
    , m_heartbeat(
          m_session, m_dispatch,
          [this] {
              m_uart.poll();
              m_ed2.poll();
          },
          time)
    , m_readRegisters(add(
          std::make_unique<Transaction>(commandType::readRegister, this->uart(), Answer::Reply)))
    , m_readVp(add(std::make_unique<Transaction>(commandType::readVp, this->uart(), Answer::Reply)))
    , m_writeRegisters(add(std::make_unique<Transaction>(commandType::writeRegister, this->uart(),
                                                         Answer::Acknowledgement)))
    , m_writeVp(add(std::make_unique<Transaction>(commandType::writeVp, this->uart(),
                                                  Answer::Acknowledgement)))
    , m_curve(
          add(std::make_unique<Transaction>(commandType::curve, this->uart(), Answer::Anything)))
    , m_freeForm(
          add(std::make_unique<Transaction>(commandType::freeForm, this->uart(), Answer::Anything)))
    , m_systemReset(add(std::make_unique<SystemReset>(this->uart())))
{
    connectLinks();
    for (const ReplyReceiver *replies : {&m_uartReplies, &m_ed2Replies}) {
        connect(replies, &ReplyReceiver::registersRead, this, &Engine::registersRead);
        connect(replies, &ReplyReceiver::vpRead, this, &Engine::vpRead);
    }
    connect(&m_reports, &ExchangeReports::progressed, this, &Engine::progressed);
    connect(&m_reports, &ExchangeReports::repeated, this, &Engine::repeated);
    connect(&m_reports, &ExchangeReports::ended, this, &Engine::ended);
}

Engine::~Engine() = default;

void Engine::connectLinks()
{
    connect(&m_uart, &SerialLink::readyRead, this, [this] {
        const QByteArray bytes = m_uart.readAll();
        m_trafficLog.add(TrafficLog::Direction::Received, bytes);
        m_uartReplies.receive(bytes);
    });
    connect(&m_ed2, &SerialLink::readyRead, this,
            [this] { m_ed2Replies.receive(m_ed2.readAll()); });
    for (const SerialLink *link : {&m_uart, &m_ed2})
        connect(link, &SerialLink::lost, this, [this, link] { m_dispatch.linkLost(*link); });
}

void Engine::useUart(const SerialSettings &settings)
{
    m_uartSettings = settings;
    applyToLink(settings, m_uart);
    // Both links are matched against the header of the UART2 settings.
    for (ReplyReceiver *replies : {&m_uartReplies, &m_ed2Replies})
        replies->setHeader(settings.header1, settings.header2, settings.crcEnabled);
    m_builder.setHeader(settings.header1, settings.header2, settings.crcEnabled);
    m_trafficLog.setFormat({settings.header1, settings.header2, settings.crcEnabled});
}

void Engine::useEd2(const SerialSettings &settings)
{
    m_ed2Settings = settings;
    applyToLink(settings, m_ed2);
}

Line Engine::uart()
{
    return {m_session,    m_uart,         m_uartReplies, m_builder, m_notices,
            m_trafficLog, m_uartSettings, m_reports,     m_policy};
}

Line Engine::ed2()
{
    return {m_session,    m_ed2,         m_ed2Replies, m_builder, m_notices,
            m_trafficLog, m_ed2Settings, m_reports,    m_policy};
}

void Engine::readRegisters(RangeSource range)
{
    m_readRegisters.start([this, range = std::move(range)] {
        const Range asked = range();
        return m_builder.buildReadRegisterFrame(static_cast<quint8>(asked.page),
                                                static_cast<quint8>(asked.address),
                                                static_cast<quint8>(asked.length));
    });
}

void Engine::readVp(RangeSource range)
{
    m_readVp.start([this, range = std::move(range)] {
        const Range asked = range();
        return m_builder.buildReadVpFrame(static_cast<quint16>(asked.address),
                                          static_cast<quint8>(asked.length % 126));
    });
}

bool Engine::writeRegisters(RangeSource range, const QByteArray &bytes)
{
    if (bytes.size() > m_builder.maxDataBytes())
        return false;
    const Range target = range();
    for (int i = 0; i < bytes.size(); ++i)
        m_builder.setRegister(target.page, target.address + i, bigEndian::byteAt(bytes, i));
    m_session.writeCount = static_cast<quint8>(bytes.size());
    m_writeRegisters.start([this, range = std::move(range)] {
        const Range asked = range();
        return m_builder.buildWriteRegisterFrame(static_cast<quint8>(asked.page),
                                                 static_cast<quint8>(asked.address),
                                                 m_session.writeCount);
    });
    return true;
}

bool Engine::writeVp(int address, const QVector<quint16> &words)
{
    if (words.size() > m_builder.maxDataBytes() / 2 || address < 0 ||
        address + words.size() > FrameBuilder::vpWords)
        return false;
    for (int i = 0; i < words.size(); ++i)
        m_builder.setVp(static_cast<quint16>(address + i), words.at(i));
    m_session.writeStart = static_cast<quint16>(address);
    m_session.writeCount = static_cast<quint8>(words.size());
    m_writeVp.start(
        [this] { return m_builder.buildWriteVpFrame(m_session.writeStart, m_session.writeCount); });
    return true;
}

bool Engine::sendCurve(const std::array<QVector<quint16>, FrameBuilder::channels> &samples,
                       quint8 mask)
{
    int channels = 0;
    int shortest = FrameBuilder::maxCurveSamples;
    for (int c = 0; c < FrameBuilder::channels; ++c) {
        if ((mask >> c & 1) == 0)
            continue;
        shortest = qMin(shortest, samples[static_cast<size_t>(c)].size());
        ++channels;
    }
    if (2 * shortest * channels > m_builder.maxDataBytes())
        return false;
    for (int c = 0; c < FrameBuilder::channels; ++c)
        m_builder.setCurveSamples(c, samples[static_cast<size_t>(c)]);
    m_builder.setCurveChannelMask(mask);
    m_curve.start([this] { return m_builder.buildCurveFrame(); });
    return true;
}

void Engine::sendFreeForm(std::function<QByteArray()> bytes, int ticks)
{
    m_freeForm.start(std::move(bytes), ticks);
}

void Engine::resetSystem()
{
    m_systemReset.start();
}

void Engine::stop()
{
    const int stopped = m_session.commandType;
    m_session.commandType = commandType::idle;
    m_uart.abandon();
    if (stopped != commandType::idle)
        emit m_reports.ended(stopped, Outcome::Stopped);
}
