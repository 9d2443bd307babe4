#include "stand-ins/board/links/FrameCheckSequence.h"

#include <array>

namespace emulated_board {

namespace {

using Tables = std::array<std::array<std::uint32_t, 256>, 8>;

// Table k gives what a byte does k places before the end of an eight-byte block, so that a block costs
// eight independent look-ups: bytewise, a full frame would cost more than its time on the line.
constexpr Tables makeTables()
{
    Tables tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit)
            value = (value >> 1) ^ ((value & 1) != 0 ? 0xEDB88320U : 0U);
        tables[0][byte] = value;
    }
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        for (std::size_t k = 1; k < 8; ++k)
            tables[k][byte] = (tables[k - 1][byte] >> 8) ^ tables[0][tables[k - 1][byte] & 0xFF];
    }
    return tables;
}

constexpr Tables tables = makeTables();

} // namespace

std::uint32_t frameCheckSequence(const std::uint8_t* bytes, std::size_t size)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (; size >= 8; size -= 8, bytes += 8) {
        const std::uint32_t head = crc ^ (bytes[0] | std::uint32_t(bytes[1]) << 8 |
                                          std::uint32_t(bytes[2]) << 16 | std::uint32_t(bytes[3]) << 24);
        crc = tables[7][head & 0xFF] ^ tables[6][(head >> 8) & 0xFF] ^ tables[5][(head >> 16) & 0xFF] ^
              tables[4][head >> 24] ^ tables[3][bytes[4]] ^ tables[2][bytes[5]] ^ tables[1][bytes[6]] ^
              tables[0][bytes[7]];
    }
    for (; size != 0; --size, ++bytes)
        crc = (crc >> 8) ^ tables[0][(crc ^ *bytes) & 0xFF];
    return ~crc;
}

bool hasGoodFrameCheckSequence(const std::vector<std::uint8_t>& frame)
{
    if (frame.size() < frameCheckSequenceBytes)
        return false;
    const std::size_t payload = frame.size() - frameCheckSequenceBytes;
    std::uint32_t there = 0;
    for (std::size_t i = 0; i < frameCheckSequenceBytes; ++i)
        there |= std::uint32_t(frame[payload + i]) << (8 * i);
    return frameCheckSequence(frame.data(), payload) == there;
}

} // namespace emulated_board
