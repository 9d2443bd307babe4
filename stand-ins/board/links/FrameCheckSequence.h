#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emulated_board {

constexpr std::size_t frameCheckSequenceBytes = 4;

/// The frame check sequence of IEEE 802.3 (CRC-32, reflected, inverted); on the line its low byte is
/// the first.
std::uint32_t frameCheckSequence(const std::uint8_t* bytes, std::size_t size);

/// Whether the last four bytes of a frame are the sequence of those before.
bool hasGoodFrameCheckSequence(const std::vector<std::uint8_t>& frame);

} // namespace emulated_board
