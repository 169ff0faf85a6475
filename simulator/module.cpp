#include "simulator/module.h"

#include "common/big_endian.h"
#include "serial/modbus_crc16.h"
#include "simulator/vp_reactions.h"

using bigEndian::appendByte;
using bigEndian::appendWord;
using bigEndian::byteAt;
using bigEndian::wordAt;

namespace k7 {

namespace {

constexpr char acknowledgement[] = "OK";

// Control registers of ED2 downloads, and what starts one.
constexpr quint8 flashControl = 0xF3;
constexpr quint8 pictureControl = 0xF5;
constexpr quint8 startMarker = 0x5A;
/// No screen has larger pictures.
constexpr int maxPictureBytes = 64 * 1024 * 1024;

bool isHandshake(const QByteArray &bytes)
{
    return (bytes.size() == 7 && bytes.startsWith(QByteArray::fromHex("5AA50480F35A"))) ||
           (bytes.size() == 9 && bytes.startsWith(QByteArray::fromHex("5AA50680F55A01")));
}

QString counted(int count, const char *unit)
{
    return QString::asprintf("%d %s%s", count, unit, count == 1 ? "" : "s");
}

} // namespace

Module::Module(const FrameFormat &format)
    : m_format(format), m_uartFrames(format), m_ed2Frames(FrameFormat())
{
}

QByteArrayList Module::receive(Link link, const QByteArray &bytes)
{
    if (link == Link::Ed2 && m_download.target != Download::Target::None && !isHandshake(bytes)) {
        storeDownload(bytes);
        return {};
    }
    FrameFinder &frames = link == Link::Uart2 ? m_uartFrames : m_ed2Frames;
    frames.append(bytes);
    QByteArrayList replies;
    while (const auto frame = frames.next()) {
        const QByteArray reply = answer(link, *frame);
        if (!reply.isEmpty())
            replies.append(reply);
    }
    return replies;
}

void Module::dropUnfinishedFrames()
{
    m_uartFrames.clear();
    m_ed2Frames.clear();
    m_download = {};
}

/// Block numbers stand in the last byte of both handshakes.
void Module::beginDownload(const QByteArray &handshake)
{
    m_download = {};
    const bool isFlash = byteAt(handshake, 0) == flashControl && handshake.size() == 3;
    const bool isPicture = byteAt(handshake, 0) == pictureControl && handshake.size() == 5;
    if ((!isFlash && !isPicture) || byteAt(handshake, 1) != startMarker)
        return;
    m_download.number = byteAt(handshake, handshake.size() - 1);
    m_download.target = isFlash ? Download::Target::Flash : Download::Target::Picture;
    if (isFlash)
        m_state.flash.write(m_download.number * Flash::blockBytes,
                            QByteArray(Flash::blockBytes, '\xFF'));
    else
        m_state.pictures[m_download.number].clear();
}

void Module::storeDownload(const QByteArray &bytes)
{
    if (m_download.target == Download::Target::Picture) {
        QByteArray &picture = m_state.pictures[m_download.number];
        picture.append(bytes.left(maxPictureBytes - picture.size()));
        return;
    }
    const QByteArray taken = bytes.left(Flash::blockBytes - m_download.received);
    m_state.flash.write(m_download.number * Flash::blockBytes + m_download.received, taken);
    m_download.received += taken.size();
    if (m_download.received == Flash::blockBytes)
        m_download = {};
}

QByteArray Module::answer(Link link, const QByteArray &frame)
{
    struct Command
    {
        Link link;
        quint8 code;
        int minimumBody;
        Outcome (Module::*run)(const QByteArray &body);
    };
    static constexpr Command commands[] = {
        {Link::Uart2, command::writeRegister, 2, &Module::writeRegisters},
        {Link::Uart2, command::readRegister, 3, &Module::readRegisters},
        {Link::Uart2, command::writeVp, 2, &Module::writeVp},
        {Link::Uart2, command::readVp, 3, &Module::readVp},
        {Link::Uart2, command::curve, 1, &Module::appendCurves},
        {Link::Uart2, command::system, 3, &Module::systemCommand},
        {Link::Ed2, command::writeRegister, 1, &Module::writeControl},
    };

    const QByteArray body = frame.mid(1);
    for (const Command &command : commands) {
        if (command.link != link || command.code != byteAt(frame, 0) ||
            body.size() < command.minimumBody)
            continue;
        const Outcome outcome = (this->*command.run)(body);
        if (m_trace)
            m_trace((link == Link::Uart2 ? "UART2 " : "ED2 ") + outcome.text);
        return outcome.reply.isEmpty() ? QByteArray()
                                       : replyFrame(link, command.code, outcome.reply);
    }
    return {};
}

QByteArray Module::replyFrame(Link link, quint8 command, const QByteArray &body) const
{
    QByteArray content;
    appendByte(content, command);
    content.append(body);
    if (link == Link::Uart2 && m_format.crcEnabled)
        content = ModbusCrc16::appendedTo(content, 0);

    QByteArray frame;
    appendByte(frame, m_format.header1);
    appendByte(frame, m_format.header2);
    appendByte(frame, static_cast<quint8>(content.size()));
    return frame + content;
}

int Module::maxReadBytes() const
{
    constexpr int head = 4; // command, two bytes of address, count
    constexpr int crc = 2;
    return 0xFF - head - (m_format.crcEnabled ? crc : 0);
}

Module::Outcome Module::writeRegisters(const QByteArray &body)
{
    const QByteArray data = body.mid(2);
    storeRegisters(byteAt(body, 0), byteAt(body, 1), data);
    return {QString::asprintf("write registers, page %u, address 0x%02X, ", byteAt(body, 0),
                              byteAt(body, 1)) +
                counted(data.size(), "byte"),
            acknowledgement};
}

/// Handshakes of the ED2 link have no page byte: they go to the control registers of page 0.
Module::Outcome Module::writeControl(const QByteArray &body)
{
    const QByteArray data = body.mid(1);
    storeRegisters(0, byteAt(body, 0), data);
    beginDownload(body);
    return {QString::asprintf("write control 0x%02X, ", byteAt(body, 0)) +
                counted(data.size(), "byte"),
            acknowledgement};
}

Module::Outcome Module::readRegisters(const QByteArray &body)
{
    const int page = byteAt(body, 0);
    const int address = byteAt(body, 1);
    const int count = qMin<int>(byteAt(body, 2), maxReadBytes());
    QByteArray reply = body.left(2);
    appendByte(reply, static_cast<quint8>(count));
    // The tool stores a read within one page, so a run that passes its end starts over.
    for (int i = 0; i < count; ++i)
        appendByte(reply, registerAt(page, (address + i) % FrameBuilder::registersPerPage));
    return {QString::asprintf("read registers, page %d, address 0x%02X, ", page,
                              static_cast<unsigned>(address)) +
                counted(count, "byte"),
            reply};
}

Module::Outcome Module::writeVp(const QByteArray &body)
{
    const int address = wordAt(body, 0);
    const int count = qMin((body.size() - 2) / 2, m_state.vp.size() - address);
    for (int i = 0; i < count; ++i)
        m_state.vp[address + i] = wordAt(body, 2 + 2 * i);
    const QString reaction = reactToVpWrite(m_state, address, count);
    return {QString::asprintf("write VP 0x%04X, ", static_cast<unsigned>(address)) +
                counted(count, "word") + (reaction.isEmpty() ? QString() : ": " + reaction),
            acknowledgement};
}

Module::Outcome Module::readVp(const QByteArray &body)
{
    const int address = wordAt(body, 0);
    reactToVpRead(m_state, address, byteAt(body, 2));
    const QVector<quint16> words =
        m_state.vp.mid(address, qMin<int>(byteAt(body, 2), maxReadBytes() / 2));
    QByteArray reply = body.left(2);
    appendByte(reply, static_cast<quint8>(words.size()));
    for (const quint16 word : words)
        appendWord(reply, word);
    return {QString::asprintf("read VP 0x%04X, ", static_cast<unsigned>(address)) +
                counted(words.size(), "word"),
            reply};
}

Module::Outcome Module::appendCurves(const QByteArray &body)
{
    const quint8 mask = byteAt(body, 0);
    QVector<QVector<quint16> *> enabled;
    for (int channel = 0; channel < FrameBuilder::channels; ++channel)
        if ((mask >> channel & 1) != 0)
            enabled.append(&m_state.curves[static_cast<size_t>(channel)]);

    const int samples = enabled.isEmpty() ? 0 : (body.size() - 1) / 2;
    for (int i = 0; i < samples; ++i)
        enabled.at(i % enabled.size())->append(wordAt(body, 1 + 2 * i));
    for (QVector<quint16> *curve : qAsConst(enabled))
        curve->remove(0, qMax(0, curve->size() - maxCurveSamples));
    return {QString::asprintf("curves, mask 0x%02X, ", mask) + counted(samples, "sample"), {}};
}

Module::Outcome Module::systemCommand(const QByteArray &body)
{
    m_state.systemArgument = byteAt(body, 2);
    return {QString::asprintf("system command 0x%02X", m_state.systemArgument), acknowledgement};
}

/// A run that passes the end of its page goes on in the next one.
void Module::storeRegisters(int page, int address, const QByteArray &data)
{
    const auto start = static_cast<size_t>(page * FrameBuilder::registersPerPage + address);
    for (int i = 0; i < data.size(); ++i) {
        const size_t index = start + static_cast<size_t>(i);
        if (index < m_state.registers.size())
            m_state.registers[index] = byteAt(data, i);
    }
}

quint8 Module::registerAt(int page, int address) const
{
    const bool exists = page >= 0 && page < FrameBuilder::registerPages && address >= 0 &&
                        address < FrameBuilder::registersPerPage;
    if (!exists)
        return 0;
    return m_state.registers[static_cast<size_t>(page * FrameBuilder::registersPerPage + address)];
}

QVector<quint16> Module::curve(int channel) const
{
    const bool exists = channel >= 0 && channel < FrameBuilder::channels;
    return exists ? m_state.curves[static_cast<size_t>(channel)] : QVector<quint16>();
}

int Module::picturePage() const
{
    return m_state.vp.at(picturePageVp);
}

} // namespace k7
