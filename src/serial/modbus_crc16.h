#pragma once

#include <QByteArray>

/// CRC-16/MODBUS (reflected polynomial 0xA001, initial value 0xFFFF, no final XOR), as the module
/// computes it over frames.
class ModbusCrc16
{
public:
    /// The CRC of the bytes of `frame` from `start` to its end; 0x4B37 over the ASCII digits 1
    /// to 9.
    static quint16 of(const QByteArray &frame, int start = 0);

    /// `frame` with the CRC of its bytes from `start` appended, low byte first; `frame` as it is
    /// when it is not longer than `start`.
    static QByteArray appendedTo(QByteArray frame, int start);
};
