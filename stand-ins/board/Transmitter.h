#pragma once

#include "stand-ins/board/links/Link.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

namespace emulated_board {

/// The frame buffer of a port, filled by 16-bit words, and the time for which a frame keeps the line
/// busy. Meant for one thread at a time; two that get in each other's way mix their words up, as in the
/// hardware, and nothing worse. Without a lock: each word of each frame comes through here.
class Transmitter {
public:
    void powerOn(bool lineSpeed);
    void reset() { m_words.store(0, std::memory_order_relaxed); }
    /// The low 16 bits count: the first byte of the frame is the low byte of the first word.
    void write(std::uint64_t word)
    {
        const std::uint32_t at = m_words.load(std::memory_order_relaxed);
        if (at < wordsMax)
            m_buffer[at].store(std::uint16_t(word), std::memory_order_relaxed);
        m_words.store(at <= wordsMax ? at + 1 : at, std::memory_order_relaxed);
    }
    /// What was written since the last reset; empty if that is more than the buffer holds.
    std::vector<std::uint8_t> frame() const;
    /// Keeps the line busy for a frame of that size, without check sequence.
    void occupyLine(std::size_t frameBytes);

    void freeze(std::uint64_t value) { m_frozen.store(value, std::memory_order_relaxed); }
    std::uint64_t frozen() const { return m_frozen.load(std::memory_order_relaxed); }
    bool isLineBusy() const;

private:
    static constexpr std::uint32_t wordsMax = frameSizeMaxBytes / 2;

    std::array<std::atomic<std::uint16_t>, wordsMax> m_buffer{};
    std::atomic<std::uint32_t> m_words{0};
    std::atomic<std::uint64_t> m_frozen{0};
    std::atomic<bool> m_lineSpeed{false};
    std::atomic<std::int64_t> m_busyUntilNs{0};
};

} // namespace emulated_board
