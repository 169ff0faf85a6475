#pragma once

#include <QByteArray>

/// The module reads, writes and checks bytes with code of its own: it shares none with the tool, so
/// that an error in the tool's shows.
namespace k7 {

/// 0 where there is no such byte.
inline quint8 byteAt(const QByteArray &bytes, int index)
{
    return index >= 0 && index < bytes.size() ? static_cast<quint8>(bytes.at(index)) : quint8{0};
}

/// High byte first; bytes that are missing read as 0.
inline quint16 wordAt(const QByteArray &bytes, int index)
{
    return static_cast<quint16>(byteAt(bytes, index) << 8 | byteAt(bytes, index + 1));
}

inline quint8 highByte(quint16 word)
{
    return static_cast<quint8>(word >> 8);
}

inline quint8 lowByte(quint16 word)
{
    return static_cast<quint8>(word & 0xFF);
}

inline void appendByte(QByteArray &bytes, quint8 value)
{
    bytes.append(static_cast<char>(value));
}

inline void appendWord(QByteArray &bytes, quint16 value)
{
    appendByte(bytes, highByte(value));
    appendByte(bytes, lowByte(value));
}

/// CRC-16/MODBUS, bit by bit as it is defined.
inline quint16 crc16(const QByteArray &bytes)
{
    unsigned crc = 0xFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? crc >> 1 ^ 0xA001U : crc >> 1;
    }
    return static_cast<quint16>(crc);
}

} // namespace k7
