#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>

namespace emulated_board {

/// Recognises own frames that come back from where they were sent to, by what is in them. [any thread]
class SentFrames {
public:
    void add(const std::uint8_t* frame, std::size_t size);
    /// Whether such a frame was sent a short time ago and has not come back yet.
    bool takeBack(const std::uint8_t* frame, std::size_t size);

private:
    using Clock = std::chrono::steady_clock;
    struct Sent {
        std::size_t print;
        Clock::time_point when;
    };

    static constexpr std::size_t rememberedMax = 1024;
    static constexpr std::chrono::seconds rememberedFor{1};

    std::mutex m_mutex;
    std::deque<Sent> m_sent;
};

} // namespace emulated_board
