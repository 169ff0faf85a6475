#include "serial/modbus_crc16.h"

#include "common/big_endian.h"

#include <array>

namespace {

constexpr quint16 polynomial = 0xA001;

struct Tables
{
    std::array<quint8, 256> toLow{};
    std::array<quint8, 256> toHigh{};
};

/// The standard pair of Modbus tables: the CRC of each single byte, cut into its two halves.
constexpr Tables makeTables()
{
    Tables tables;
    for (unsigned byte = 0; byte < 256; ++byte) {
        unsigned crc = byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? crc >> 1 ^ polynomial : crc >> 1;
        tables.toLow[byte] = static_cast<quint8>(crc & 0xFF);
        tables.toHigh[byte] = static_cast<quint8>(crc >> 8);
    }
    return tables;
}

constexpr Tables tables = makeTables();
static_assert(tables.toLow[1] == 0xC1 && tables.toLow[2] == 0x81 && tables.toLow[3] == 0x40);
static_assert(tables.toHigh[1] == 0xC0 && tables.toHigh[2] == 0xC1 && tables.toHigh[3] == 0x01);

} // namespace

quint16 ModbusCrc16::of(const QByteArray &frame, int start)
{
    quint8 low = 0xFF;
    quint8 high = 0xFF;
    for (int i = start; i < frame.size(); ++i) {
        const quint8 index = low ^ bigEndian::byteAt(frame, i);
        low = high ^ tables.toLow[index];
        high = tables.toHigh[index];
    }
    return static_cast<quint16>(high << 8 | low);
}

QByteArray ModbusCrc16::appendedTo(QByteArray frame, int start)
{
    if (frame.size() <= start)
        return frame;
    const quint16 crc = of(frame, start);
    bigEndian::appendByte(frame, static_cast<quint8>(crc & 0xFF));
    bigEndian::appendByte(frame, static_cast<quint8>(crc >> 8));
    return frame;
}
