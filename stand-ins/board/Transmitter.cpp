#include "stand-ins/board/Transmitter.h"

#include <chrono>

namespace emulated_board {

namespace {

// IEEE 802.3: preamble and start of frame 8, check sequence 4, gap between frames 12.
constexpr std::size_t aroundFrameBytes = 24;
constexpr std::int64_t gigabitByteNs = 8;

std::int64_t nowNs()
{
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

void Transmitter::powerOn(bool lineSpeed)
{
    reset();
    freeze(0);
    m_lineSpeed.store(lineSpeed, std::memory_order_relaxed);
    m_busyUntilNs.store(0, std::memory_order_relaxed);
}

std::vector<std::uint8_t> Transmitter::frame() const
{
    std::vector<std::uint8_t> bytes;
    const std::uint32_t words = m_words.load(std::memory_order_relaxed);
    if (words > wordsMax)
        return bytes;
    bytes.reserve(words * 2 + 4); // a check sequence may follow
    for (std::uint32_t i = 0; i < words; ++i) {
        const std::uint16_t word = m_buffer[i].load(std::memory_order_relaxed);
        bytes.push_back(std::uint8_t(word));
        bytes.push_back(std::uint8_t(word >> 8));
    }
    return bytes;
}

void Transmitter::occupyLine(std::size_t frameBytes)
{
    if (m_lineSpeed.load(std::memory_order_relaxed)) {
        const auto ns = std::int64_t(frameBytes + aroundFrameBytes) * gigabitByteNs;
        m_busyUntilNs.store(nowNs() + ns, std::memory_order_relaxed);
    }
}

bool Transmitter::isLineBusy() const
{
    return m_lineSpeed.load(std::memory_order_relaxed) &&
           nowNs() < m_busyUntilNs.load(std::memory_order_relaxed);
}

} // namespace emulated_board
