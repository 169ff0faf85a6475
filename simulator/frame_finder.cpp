#include "simulator/frame_finder.h"

#include "simulator/bytes.h"

namespace k7 {

namespace {

constexpr int headBytes = 3; // header pair and length byte: what the length does not count
constexpr int crcBytes = 2;

} // namespace

void FrameFinder::append(const QByteArray &bytes)
{
    m_buffer.remove(0, m_start);
    m_buffer.append(bytes);
    m_start = 0;
}

std::optional<QByteArray> FrameFinder::next()
{
    const int trailer = m_format.crcEnabled ? crcBytes : 0;
    for (; m_start < m_buffer.size(); ++m_start) {
        if (!mayStartFrame())
            continue;
        const int arrived = m_buffer.size() - m_start - headBytes;
        if (arrived < 0)
            return std::nullopt;
        const int length = byteAt(m_buffer, m_start + headBytes - 1);
        if (length <= trailer)
            continue;
        if (arrived < length)
            return std::nullopt;

        const QByteArray content = m_buffer.mid(m_start + headBytes, length);
        const QByteArray payload = content.left(length - trailer);
        const quint16 crc = crc16(payload);
        const bool isIntact = byteAt(content, length - crcBytes) == lowByte(crc) &&
                              byteAt(content, length - 1) == highByte(crc);
        // After a wrong CRC the length is not to be trusted, so the search goes on at the next
        // byte.
        if (m_format.crcEnabled && !isIntact)
            continue;
        m_start += headBytes + length;
        return payload;
    }
    return std::nullopt;
}

QByteArray FrameFinder::takeRest()
{
    const QByteArray rest = m_buffer.mid(m_start);
    m_buffer.clear();
    m_start = 0;
    return rest;
}

bool FrameFinder::mayStartFrame() const
{
    const bool hasSecond = m_start + 1 < m_buffer.size();
    return byteAt(m_buffer, m_start) == m_format.header1 &&
           (!hasSecond || byteAt(m_buffer, m_start + 1) == m_format.header2);
}

} // namespace k7
