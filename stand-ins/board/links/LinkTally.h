#pragma once

#include "stand-ins/board/BoardControl.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

namespace emulated_board {

/// Frames of one direction and their bytes, without frame check sequence. [any thread]
class FrameCount {
public:
    void add(std::size_t bytes)
    {
        m_frames.fetch_add(1, std::memory_order_relaxed);
        m_bytes.fetch_add(bytes, std::memory_order_relaxed);
    }
    std::uint64_t frames() const { return m_frames.load(std::memory_order_relaxed); }
    std::uint64_t bytes() const { return m_bytes.load(std::memory_order_relaxed); }

private:
    std::atomic<std::uint64_t> m_frames{0};
    std::atomic<std::uint64_t> m_bytes{0};
};

/// What a link counts, and whether it is still there. [any thread]
class LinkTally {
public:
    FrameCount& out() { return m_out; }
    FrameCount& in() { return m_in; }
    void refused() { m_refused.fetch_add(1, std::memory_order_relaxed); }
    void lost() { m_lost.fetch_add(1, std::memory_order_relaxed); }
    void failed() { m_errors.fetch_add(1, std::memory_order_relaxed); }

    /// The link went away for good. The first call tells it on stderr.
    /// @param link how the link is told to users.
    void gone(const std::string& link, const std::string& reason);
    bool isUp() const { return m_isUp.load(std::memory_order_relaxed); }

    KivoBoardLinkCounters counters() const;

private:
    FrameCount m_out;
    FrameCount m_in;
    std::atomic<std::uint64_t> m_refused{0};
    std::atomic<std::uint64_t> m_lost{0};
    std::atomic<std::uint64_t> m_errors{0};
    std::atomic<bool> m_isUp{true};
    mutable std::mutex m_reasonMutex;
    std::string m_reason;
};

} // namespace emulated_board
