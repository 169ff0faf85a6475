#include "simulator/module.h"

#include "simulator/bytes.h"
#include "simulator/vp_reactions.h"

#include <utility>

namespace k7 {

namespace {

constexpr char acknowledgement[] = "OK";

// Commands of the frames: the byte after the length.
constexpr quint8 writeRegisterCommand = 0x80;
constexpr quint8 readRegisterCommand = 0x81;
constexpr quint8 writeVpCommand = 0x82;
constexpr quint8 readVpCommand = 0x83;
constexpr quint8 curveCommand = 0x84;
constexpr quint8 systemCommandCode = 0x8F;
constexpr quint8 restartAnnouncement = 0xA0;

// Control registers of ED2 downloads, and what starts one.
constexpr quint8 flashControl = 0xF3;
constexpr quint8 pictureControl = 0xF5;
constexpr quint8 startMarker = 0x5A;
/// No screen has larger pictures.
constexpr int maxPictureBytes = 64 * 1024 * 1024;

QString counted(int count, const char *unit)
{
    return QString::asprintf("%d %s%s", count, unit, count == 1 ? "" : "s");
}

/// Whether `bytes` begin as the handshakes of the tool do.
bool beginsWithHandshake(const QByteArray &bytes)
{
    return bytes.startsWith(QByteArrayLiteral("\x5A\xA5\x04\x80\xF3\x5A")) ||
           bytes.startsWith(QByteArrayLiteral("\x5A\xA5\x06\x80\xF5\x5A\x01"));
}

/// Why the handshake `body`, which goes to one of the control registers, starts no download; empty
/// when it does.
QString handshakeFault(const QByteArray &body)
{
    const bool isPicture = byteAt(body, 0) == pictureControl;
    if (body.size() != (isPicture ? 5 : 3))
        return QStringLiteral("a handshake of this length is unknown");
    if (byteAt(body, 1) != startMarker)
        return QStringLiteral("the start marker is missing");
    if (isPicture && byteAt(body, 2) != 1)
        return QStringLiteral("the byte behind the start marker is not 1");
    if (isPicture && byteAt(body, 3) != 0)
        return QStringLiteral("there is no picture number above 255");
    return {};
}

} // namespace

Module::Module(const ModuleSettings &settings)
    : m_settings(settings)
    , m_uart{FrameFinder(settings.format), 0}
    , m_ed2{FrameFinder(FrameFormat()), 0}
{
}

void Module::configure(const ModuleSettings &settings)
{
    m_settings = settings;
    m_uart.frames = FrameFinder(settings.format);
    dropUnfinishedFrames();
    if (m_screenChanged)
        m_screenChanged();
}

QByteArrayList Module::receive(Link link, const QByteArray &bytes, qint64 now)
{
    endAfterSilence(link, bytes, now);
    Arrival &arrived = arrival(link);
    arrived.last = now;
    m_now = now;
    QByteArrayList replies;
    for (QByteArray rest = bytes; !rest.isEmpty();) {
        if (losesBytes(link, now))
            break;
        if (isDownloading(link)) {
            rest = storeDownload(rest, now);
            continue;
        }
        arrived.frames.append(rest);
        rest.clear();
        const auto frame = arrived.frames.next();
        if (!frame)
            break;
        const QByteArray reply = answer(link, *frame);
        if (!reply.isEmpty())
            replies.append(reply);
        // What the frame has started decides what the bytes behind it are.
        rest = arrived.frames.takeRest();
    }
    reportScreen();
    return replies;
}

void Module::dropUnfinishedFrames()
{
    m_uart.frames.takeRest();
    m_ed2.frames.takeRest();
    m_download = {};
    m_busyUntil = 0;
}

void Module::setPicture(int number, const QByteArray &pixels)
{
    m_state.pictures[number] = pixels;
    m_state.isScreenStale = true;
    reportScreen();
}

void Module::endAfterSilence(Link link, const QByteArray &next, qint64 now)
{
    Arrival &arrived = arrival(link);
    if (arrived.frames.isWaiting() && now - arrived.last >= frameSilence) {
        arrived.frames.takeRest();
        trace(link, "drops an unfinished frame");
    }
    // Before the first byte of a block arrived.last is when its handshake came.
    const int silence = m_download.received == 0 ? blockPatience : blockSilence;
    if (isDownloading(link) && now - arrived.last >= silence && beginsWithHandshake(next))
        endDownload(arrived.last);
}

bool Module::losesBytes(Link link, qint64 now)
{
    if (now >= m_busyUntil)
        return false;
    arrival(link).frames.takeRest();
    if (!m_hasTracedLoss)
        trace(link, "loses bytes while the flash is programmed");
    m_hasTracedLoss = true;
    return true;
}

void Module::beginProgramming(qint64 begin, int time)
{
    if (!m_programmingTakesTime || time == 0)
        return;
    m_busyUntil = begin + time;
    m_hasTracedLoss = false;
}

bool Module::isDownloading(Link link) const
{
    return link == Link::Ed2 && m_download.target != Download::Target::None;
}

/// The number of the block stands in the last byte of both handshakes.
void Module::beginDownload(const QByteArray &handshake)
{
    const bool isFlash = byteAt(handshake, 0) == flashControl;
    m_download = {isFlash ? Download::Target::Flash : Download::Target::Picture,
                  byteAt(handshake, handshake.size() - 1), 0};
    if (isFlash) {
        m_state.flash.write(m_download.number * Flash::blockBytes,
                            QByteArray(Flash::blockBytes, '\xFF'));
        return;
    }
    m_state.pictures[m_download.number].clear();
    m_state.pagedPictures.remove(m_download.number);
    m_state.storedJpegs.remove(m_download.number);
    if (m_download.number == picturePage()) {
        m_state.overlays.clear();
        m_state.showsMemory = false;
    }
}

void Module::endDownload(qint64 lastByte)
{
    if (m_download.target == Download::Target::Flash)
        beginProgramming(lastByte, blockProgramming);
    m_download = {};
}

QByteArray Module::storeDownload(const QByteArray &bytes, qint64 now)
{
    if (m_download.target == Download::Target::Picture) {
        QByteArray &picture = m_state.pictures[m_download.number];
        picture.append(bytes.left(maxPictureBytes - picture.size()));
        m_download.received = picture.size();
        m_state.isScreenStale = m_state.isScreenStale || m_download.number == picturePage();
        return {};
    }
    const QByteArray taken = bytes.left(Flash::blockBytes - m_download.received);
    m_state.flash.write(m_download.number * Flash::blockBytes + m_download.received, taken);
    m_download.received += taken.size();
    if (m_download.received == Flash::blockBytes)
        endDownload(now);
    return bytes.mid(taken.size());
}

void Module::reportScreen()
{
    const bool isStale = m_state.isScreenStale;
    m_state.isScreenStale = false;
    if (isStale && m_screenChanged)
        m_screenChanged();
}

void Module::trace(Link link, const QString &text)
{
    if (m_trace)
        m_trace((link == Link::Uart2 ? "UART2 " : "ED2 ") + text);
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
        {Link::Uart2, writeRegisterCommand, 2, &Module::writeRegisters},
        {Link::Uart2, readRegisterCommand, 3, &Module::readRegisters},
        {Link::Uart2, writeVpCommand, 2, &Module::writeVp},
        {Link::Uart2, readVpCommand, 3, &Module::readVp},
        {Link::Uart2, curveCommand, 1, &Module::appendCurves},
        {Link::Uart2, systemCommandCode, 3, &Module::systemCommand},
        {Link::Ed2, writeRegisterCommand, 1, &Module::writeControl},
    };

    const QByteArray body = frame.mid(1);
    for (const Command &command : commands) {
        if (command.link != link || command.code != byteAt(frame, 0) ||
            body.size() < command.minimumBody)
            continue;
        const Outcome outcome = (this->*command.run)(body);
        trace(link, outcome.text);
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
    if (link == Link::Uart2 && m_settings.format.crcEnabled) {
        const quint16 crc = crc16(content);
        appendByte(content, lowByte(crc));
        appendByte(content, highByte(crc));
    }

    QByteArray frame;
    appendByte(frame, m_settings.format.header1);
    appendByte(frame, m_settings.format.header2);
    appendByte(frame, static_cast<quint8>(content.size()));
    return frame + content;
}

int Module::maxReadBytes() const
{
    constexpr int head = 4; // command, two bytes of address, count
    constexpr int crc = 2;
    return 0xFF - head - (m_settings.format.crcEnabled ? crc : 0);
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
    const QString text =
        QString::asprintf("write control 0x%02X, ", byteAt(body, 0)) + counted(data.size(), "byte");
    const bool isHandshake = byteAt(body, 0) == flashControl || byteAt(body, 0) == pictureControl;
    const QString fault = isHandshake ? handshakeFault(body) : QString();
    if (!fault.isEmpty())
        return {text + " refused: " + fault, {}};
    storeRegisters(0, byteAt(body, 0), data);
    if (isHandshake)
        beginDownload(body);
    return {text, acknowledgement};
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
        appendByte(reply, registerAt(page, (address + i) % registersPerPage));
    return {QString::asprintf("read registers, page %d, address 0x%02X, ", page,
                              static_cast<unsigned>(address)) +
                counted(count, "byte"),
            reply};
}

Module::Outcome Module::writeVp(const QByteArray &body)
{
    const int address = wordAt(body, 0);
    const int count = qMin((body.size() - 2) / 2, m_state.vp.size() - address);
    const QString text = QString::asprintf("write VP 0x%04X, ", static_cast<unsigned>(address)) +
                         counted(count, "word");
    const QVector<quint16> before = m_state.vp.mid(address, count);
    for (int i = 0; i < count; ++i)
        m_state.vp[address + i] = wordAt(body, 2 + 2 * i);
    const VpReaction reaction = reactToVpWrite(m_state, m_settings, address, count);
    if (!reaction.refusal.isEmpty()) {
        std::copy(before.begin(), before.end(), m_state.vp.begin() + address);
        return {text + " refused: " + reaction.refusal, {}};
    }
    beginProgramming(m_now, std::exchange(m_state.programmingTime, 0));
    return {text + (reaction.done.isEmpty() ? QString() : ": " + reaction.done), acknowledgement};
}

Module::Outcome Module::readVp(const QByteArray &body)
{
    const int address = wordAt(body, 0);
    reactToVpRead(m_state, m_settings, address, byteAt(body, 2));
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
    for (int channel = 0; channel < curveChannels; ++channel)
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
    m_state.isRestartAnnounced = m_state.systemArgument == restartAnnouncement;
    return {QString::asprintf("system command 0x%02X", m_state.systemArgument), acknowledgement};
}

/// A run that passes the end of its page goes on in the next one.
void Module::storeRegisters(int page, int address, const QByteArray &data)
{
    const auto start = static_cast<size_t>(page * registersPerPage + address);
    for (int i = 0; i < data.size(); ++i) {
        const size_t index = start + static_cast<size_t>(i);
        if (index < m_state.registers.size())
            m_state.registers[index] = byteAt(data, i);
    }
}

quint8 Module::registerAt(int page, int address) const
{
    const bool exists =
        page >= 0 && page < registerPages && address >= 0 && address < registersPerPage;
    if (!exists)
        return 0;
    return m_state.registers[static_cast<size_t>(page * registersPerPage + address)];
}

QVector<quint16> Module::curve(int channel) const
{
    const bool exists = channel >= 0 && channel < curveChannels;
    return exists ? m_state.curves[static_cast<size_t>(channel)] : QVector<quint16>();
}

} // namespace k7
