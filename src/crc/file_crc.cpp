#include "crc/file_crc.h"

#include <array>

namespace {

constexpr unsigned polynomial = 0xA001;
constexpr int slices = 8;

/// Table s holds the CRC of each byte followed by s bytes of zeros.
using Tables = std::array<std::array<quint16, 256>, slices>;

constexpr Tables makeTables()
{
    Tables tables{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        unsigned crc = byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? crc >> 1 ^ polynomial : crc >> 1;
        tables[0][byte] = static_cast<quint16>(crc);
    }
    for (size_t slice = 1; slice < slices; ++slice)
        for (size_t byte = 0; byte < 256; ++byte) {
            const unsigned crc = tables[slice - 1][byte];
            tables[slice][byte] = static_cast<quint16>(crc >> 8 ^ tables[0][crc & 0xFF]);
        }
    return tables;
}

constexpr Tables tables = makeTables();

} // namespace

quint16 fileCrc(const char *data, int count)
{
    const auto *byte = reinterpret_cast<const quint8 *>(data);
    unsigned crc = 0xFFFF;
    for (; count >= slices; count -= slices, byte += slices)
        crc = tables[7][(crc ^ byte[0]) & 0xFF] ^ tables[6][crc >> 8 ^ byte[1]] ^
              tables[5][byte[2]] ^ tables[4][byte[3]] ^ tables[3][byte[4]] ^ tables[2][byte[5]] ^
              tables[1][byte[6]] ^ tables[0][byte[7]];
    for (; count > 0; --count, ++byte)
        crc = crc >> 8 ^ tables[0][(crc ^ *byte) & 0xFF];
    return static_cast<quint16>(crc);
}
