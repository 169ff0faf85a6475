#include "serial/frame_builder.h"

#include "common/big_endian.h"
#include "serial/modbus_crc16.h"

using bigEndian::appendByte;
using bigEndian::appendWord;

namespace {

constexpr int lengthIndex = 2;
constexpr int commandIndex = 3;

} // namespace

void FrameBuilder::setHeader(quint8 header1, quint8 header2, bool crcEnabled)
{
    m_header1 = header1;
    m_header2 = header2;
    m_crcEnabled = crcEnabled;
}

void FrameBuilder::setRegister(int page, int address, quint8 value)
{
    const auto row = static_cast<quint8>(page);
    if (row < registerPages)
        m_registerTable[static_cast<size_t>(row * registersPerPage +
                                            static_cast<quint8>(address))] = value;
}

quint8 FrameBuilder::registerAt(int page, int address) const
{
    const bool inside =
        page >= 0 && page < registerPages && address >= 0 && address < registersPerPage;
    return inside ? flatRegister(page * registersPerPage + address) : quint8{0};
}

quint8 FrameBuilder::flatRegister(int offset) const
{
    const auto index = static_cast<size_t>(offset);
    return index < m_registerTable.size() ? m_registerTable[index] : quint8{0};
}

void FrameBuilder::setVp(quint16 address, quint16 value)
{
    m_vpTable[address] = value;
}

quint16 FrameBuilder::vpAt(int address) const
{
    return address >= 0 && address < vpWords ? m_vpTable[static_cast<size_t>(address)] : quint16{0};
}

void FrameBuilder::setCurveSamples(int channel, const QVector<quint16> &samples)
{
    if (channel >= 0 && channel < channels)
        m_curveChannels[static_cast<size_t>(channel)] = samples;
}

QByteArray FrameBuilder::buildWriteRegisterFrame(quint8 page, quint8 address, quint8 count) const
{
    QByteArray frame = begin(command::writeRegister);
    appendByte(frame, page);
    appendByte(frame, address);
    for (int i = 0; i < count; ++i)
        appendByte(frame, flatRegister(page * registersPerPage + address + i));
    return finish(frame);
}

QByteArray FrameBuilder::buildReadRegisterFrame(quint8 page, quint8 address, quint8 count) const
{
    QByteArray frame = begin(command::readRegister);
    appendByte(frame, page);
    appendByte(frame, address);
    appendByte(frame, count);
    return finish(frame);
}

QByteArray FrameBuilder::buildWriteVpFrame(quint16 address, quint8 count) const
{
    QByteArray frame = begin(command::writeVp);
    appendWord(frame, address);
    for (int i = 0; i < count; ++i)
        appendWord(frame, vpAt(address + i));
    return finish(frame);
}

QByteArray FrameBuilder::buildReadVpFrame(quint16 address, quint8 count) const
{
    QByteArray frame = begin(command::readVp);
    appendWord(frame, address);
    appendByte(frame, count);
    return finish(frame);
}

QByteArray FrameBuilder::buildCurveFrame() const
{
    QVector<const QVector<quint16> *> enabled;
    int samples = maxCurveSamples;
    for (int channel = 0; channel < channels; ++channel) {
        if ((m_curveChannelMask >> channel & 1) == 0)
            continue;
        const auto &queue = m_curveChannels[static_cast<size_t>(channel)];
        samples = qMin(samples, queue.size());
        enabled.append(&queue);
    }

    QByteArray frame = begin(command::curve);
    appendByte(frame, m_curveChannelMask);
    for (int j = 0; j < samples; ++j)
        for (const QVector<quint16> *queue : qAsConst(enabled))
            appendWord(frame, queue->at(j));
    return finish(frame);
}

QByteArray FrameBuilder::buildCmd8FFrame() const
{
    QByteArray frame = begin(command::system);
    appendWord(frame, 0x0000);
    appendByte(frame, m_cmd8FArgument);
    return finish(frame);
}

QByteArray FrameBuilder::begin(quint8 command) const
{
    QByteArray frame;
    appendByte(frame, m_header1);
    appendByte(frame, m_header2);
    appendByte(frame, 0); // the length, known at the end
    appendByte(frame, command);
    return frame;
}

QByteArray FrameBuilder::finish(QByteArray frame) const
{
    if (m_crcEnabled)
        frame = ModbusCrc16::appendedTo(frame, commandIndex);
    frame[lengthIndex] = static_cast<char>(static_cast<quint8>(frame.size() - commandIndex));
    return frame;
}
