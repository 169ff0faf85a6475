#include "serial/reply_receiver.h"

#include "common/big_endian.h"
#include "serial/frame_builder.h"
#include "serial/modbus_crc16.h"

using bigEndian::byteAt;
using bigEndian::wordAt;

namespace {

constexpr int lengthOffset = 2;
constexpr int commandOffset = 3;
constexpr int bodyOffset = 4;
constexpr int addressedBytes = 3; // command, and address or page and address
constexpr int envelopeBytes = 3;  // header pair and length byte: what the length does not count
constexpr int crcBytes = 2;

bool isRead(const QByteArray &request)
{
    const quint8 asked = byteAt(request, commandOffset);
    return asked == command::readRegister || asked == command::readVp;
}

/// The bytes that the read `request` asks for.
int askedBytes(const QByteArray &request)
{
    const int count = byteAt(request, bodyOffset + 2);
    return byteAt(request, commandOffset) == command::readVp ? 2 * count : count;
}

} // namespace

ReplyReceiver::ReplyReceiver(const ReceiveRules &rules, FrameBuilder &mirrors, bool &replyReceived,
                             QObject *parent)
    : QObject(parent), m_rules(rules), m_mirrors(mirrors), m_replyReceived(replyReceived)
{
}

void ReplyReceiver::setHeader(quint8 header1, quint8 header2, bool crcEnabled)
{
    m_hasCrc = crcEnabled && m_rules.mayHaveCrc;
    m_header1 = header1;
    m_header2 = header2;
}

void ReplyReceiver::receive(const QByteArray &bytes)
{
    m_buffer.append(bytes);
    if (!m_request.isEmpty()) {
        takeAnswers();
        return;
    }
    if (m_buffer.size() < m_rules.minimumBytes)
        return;
    const int unfinished = scan();
    // With an unfinished frame the whole buffer is kept, so the frames before it are dispatched
    // again when the rest arrives. That is wanted.
    if (unfinished < 0)
        m_buffer.clear();
    else if (m_buffer.size() > maxKeptBytes)
        m_buffer.remove(0, unfinished);
}

void ReplyReceiver::expect(const QByteArray &request)
{
    m_buffer.clear();
    m_request = request;
    m_answers = 0;
    m_replyReceived = false;
}

int ReplyReceiver::replyBytes(const QByteArray &request)
{
    constexpr int acknowledgement = bodyOffset + 2;
    return crcBytes +
           (isRead(request) ? bodyOffset + addressedBytes + askedBytes(request) : acknowledgement);
}

void ReplyReceiver::takeAnswers()
{
    int i = 0;
    while (i < m_buffer.size()) {
        const quint8 first = byteAt(m_buffer, i);
        if (isHeaderAt(i)) {
            const int start = isCompleteAt(i) ? i : answerBehind(i);
            if (start < 0)
                break;
            if (answersAt(start)) {
                dispatch(start);
                ++m_answers;
            }
            i = start + envelopeBytes + byteAt(m_buffer, start + lengthOffset);
        } else if (isAcknowledgementAt(i) && !m_hasCrc && !isRead(m_request)) {
            m_replyReceived = true;
            ++m_answers;
            i += 2;
        } else if (i + 1 == m_buffer.size() && (first == m_header1 || first == 'O')) {
            break;
        } else {
            ++i;
        }
    }
    m_buffer.remove(0, i);
}

bool ReplyReceiver::isCompleteAt(int start) const
{
    return start + lengthOffset < m_buffer.size() &&
           start + envelopeBytes + byteAt(m_buffer, start + lengthOffset) <= m_buffer.size();
}

int ReplyReceiver::answerBehind(int start) const
{
    for (int i = start + 1; i < m_buffer.size(); ++i)
        if (isHeaderAt(i) && isCompleteAt(i) && answersAt(i))
            return i;
    return -1;
}

bool ReplyReceiver::answersAt(int start) const
{
    const QByteArray content =
        m_buffer.mid(start + commandOffset, byteAt(m_buffer, start + lengthOffset));
    if (byteAt(content, 0) != byteAt(m_request, commandOffset))
        return false;
    const int data = content.size() - (m_hasCrc ? crcBytes : 0);
    if (m_hasCrc && ModbusCrc16::appendedTo(content.left(data), 0) != content)
        return false;
    if (!isRead(m_request))
        return data >= 3 && isAcknowledgementAt(start + bodyOffset);
    // Which words or registers, and how many, stands in both at the same place.
    return data >= 1 + addressedBytes + askedBytes(m_request) &&
           content.mid(1, addressedBytes) == m_request.mid(bodyOffset, addressedBytes);
}

int ReplyReceiver::scan()
{
    int i = 0;
    while (i < m_buffer.size()) {
        if (isHeaderAt(i)) {
            const bool hasLength = i + lengthOffset < m_buffer.size();
            const int length = byteAt(m_buffer, i + lengthOffset);
            const bool isComplete = hasLength ? m_buffer.size() - i - envelopeBytes >= length
                                              : !m_rules.waitsForLengthByte;
            if (!isComplete)
                return i;
            dispatch(i);
            i += envelopeBytes + length;
            continue;
        }
        if (isAcknowledgementAt(i))
            m_replyReceived = true;
        ++i;
    }
    return -1;
}

bool ReplyReceiver::isHeaderAt(int index) const
{
    return index + 1 < m_buffer.size() && byteAt(m_buffer, index) == m_header1 &&
           byteAt(m_buffer, index + 1) == m_header2;
}

bool ReplyReceiver::isAcknowledgementAt(int index) const
{
    return byteAt(m_buffer, index) == 'O' && byteAt(m_buffer, index + 1) == 'K';
}

void ReplyReceiver::dispatch(int start)
{
    if (start + commandOffset >= m_buffer.size())
        return;
    const int body = start + bodyOffset;
    // Without its address a reply tells nothing.
    const bool hasAddress = byteAt(m_buffer, start + lengthOffset) >= addressedBytes;
    switch (byteAt(m_buffer, start + commandOffset)) {
    case command::writeRegister:
    case command::writeVp:
    case command::system:
        if (isAcknowledgementAt(body))
            m_replyReceived = true;
        break;
    case command::readRegister:
        if (hasAddress) {
            storeRegisters(body);
            emit registersRead();
        }
        break;
    case command::readVp:
        if (hasAddress) {
            storeVp(body);
            emit vpRead(wordAt(m_buffer, body));
        }
        break;
    default:
        break;
    }
}

void ReplyReceiver::storeRegisters(int body)
{
    const int page = byteAt(m_buffer, body);
    const int address = byteAt(m_buffer, body + 1);
    const int count = byteAt(m_buffer, body + 2);
    for (int i = 0; i < count; ++i)
        m_mirrors.setRegister(page, (address + i) % FrameBuilder::registersPerPage,
                              byteAt(m_buffer, body + 3 + i));
}

void ReplyReceiver::storeVp(int body)
{
    const int address = wordAt(m_buffer, body);
    const int count = byteAt(m_buffer, body + 2);
    for (int i = 0; i < count; ++i)
        m_mirrors.setVp(static_cast<quint16>(address + i), wordAt(m_buffer, body + 3 + 2 * i));
}
