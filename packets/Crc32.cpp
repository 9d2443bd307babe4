#include "packets/Crc32.h"

#include <QtEndian>

#include <array>

namespace {
constexpr quint32 polynomial = 0xedb88320U;
constexpr std::size_t wordBytes = sizeof(quint32);
constexpr std::size_t sliceBytes = 16;

using Table = std::array<quint32, 256>;

// Table k gives what a byte does to the register when k zero bytes come behind it, so that the 16 look-ups of
// a slice don't wait for each other.
constexpr std::array<Table, sliceBytes> makeTables()
{
    std::array<Table, sliceBytes> tables{};
    for (quint32 byte = 0; byte < 256; ++byte) {
        quint32 entry = byte;
        for (int bit = 0; bit < 8; ++bit)
            entry = (entry >> 1) ^ ((entry & 1) != 0 ? polynomial : 0);
        tables[0][byte] = entry;
    }
    for (std::size_t k = 1; k < sliceBytes; ++k) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const quint32 before = tables[k - 1][byte];
            tables[k][byte] = (before >> 8) ^ tables[0][before & 0xff];
        }
    }
    return tables;
}

constexpr std::array<Table, sliceBytes> tables = makeTables();

// The effect of four bytes, the first of which has `behind` + 3 bytes of its slice behind it.
template <std::size_t behind>
quint32 lookUp(quint32 word) noexcept
{
    return tables[behind + 3][word & 0xff] ^ tables[behind + 2][(word >> 8) & 0xff] ^
           tables[behind + 1][(word >> 16) & 0xff] ^ tables[behind][word >> 24];
}
} // namespace

quint32 ethernetCrc32(const char* data, std::size_t size) noexcept
{
    quint32 crc = 0xffffffffU;
    for (; size >= sliceBytes; data += sliceBytes, size -= sliceBytes) {
        crc = lookUp<12>(qFromLittleEndian<quint32>(data) ^ crc) ^
              lookUp<8>(qFromLittleEndian<quint32>(data + 4)) ^
              lookUp<4>(qFromLittleEndian<quint32>(data + 8)) ^
              lookUp<0>(qFromLittleEndian<quint32>(data + 12));
    }
    for (; size >= wordBytes; data += wordBytes, size -= wordBytes)
        crc = lookUp<0>(qFromLittleEndian<quint32>(data) ^ crc);
    for (; size > 0; ++data, --size)
        crc = tables[0][(crc ^ quint8(*data)) & 0xff] ^ (crc >> 8);
    return ~crc;
}
