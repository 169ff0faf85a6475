#pragma once

#include <QByteArray>

/// CRC-16/MODBUS (reflected polynomial 0xA001, initial value 0xFFFF, no final XOR) of `count` bytes
/// from `data` on, eight at a time: files are long. 0x4B37 for the ASCII digits 1 to 9.
quint16 fileCrc(const char *data, int count);

inline quint16 fileCrc(const QByteArray &bytes)
{
    return fileCrc(bytes.constData(), bytes.size());
}
