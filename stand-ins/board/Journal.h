#pragma once

#include "stand-ins/board/BoardControl.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>

namespace emulated_board {

/// The newest calls, in the order in which they ended. [any thread]
class Journal {
public:
    void setCapacity(std::size_t calls);
    void clear();
    bool isOn() const { return m_capacity.load(std::memory_order_relaxed) != 0; }

    /// Adds a call of the calling thread.
    void add(const char* operation, const std::string& text, const std::array<std::uint64_t, 4>& arguments,
             std::int64_t result, std::uint64_t value);

    std::size_t size() const;
    std::uint64_t dropped() const;
    bool entry(std::size_t index, KivoBoardCall& call) const;

private:
    void trim(std::size_t capacity);

    mutable std::mutex m_mutex;
    std::deque<KivoBoardCall> m_calls;
    std::uint64_t m_dropped = 0;
    std::atomic<std::size_t> m_capacity{0};
};

/// Copies a text into a caller's buffer, zero-terminated and cut to its size; gives its whole length.
std::size_t copyText(const std::string& text, char* buffer, std::size_t size);

} // namespace emulated_board
