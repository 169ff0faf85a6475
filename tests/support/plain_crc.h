#pragma once

#include <QByteArray>

/// CRC-16/MODBUS bit by bit, as it is defined.
inline quint16 plainCrc(const QByteArray &bytes)
{
    unsigned crc = 0xFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? crc >> 1 ^ 0xA001U : crc >> 1;
    }
    return static_cast<quint16>(crc);
}
