#pragma once

#include <QByteArray>

/// Multi-byte numbers as the module stores and sends them: high byte first.
namespace bigEndian {

/// The byte at `index` of `bytes`, or 0 where there is none: what a module leaves out counts as 0.
inline quint8 byteAt(const QByteArray &bytes, int index)
{
    return index >= 0 && index < bytes.size() ? static_cast<quint8>(bytes.at(index)) : quint8{0};
}

/// The word whose high byte is at `index`; missing bytes count as 0.
inline quint16 wordAt(const QByteArray &bytes, int index)
{
    return static_cast<quint16>(byteAt(bytes, index) << 8 | byteAt(bytes, index + 1));
}

inline void appendByte(QByteArray &bytes, quint8 value)
{
    bytes.append(static_cast<char>(value));
}

inline void appendWord(QByteArray &bytes, quint16 value)
{
    appendByte(bytes, static_cast<quint8>(value >> 8));
    appendByte(bytes, static_cast<quint8>(value & 0xFF));
}

} // namespace bigEndian
