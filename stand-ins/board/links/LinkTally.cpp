#include "stand-ins/board/links/LinkTally.h"

#include <cstdio>
#include <fmt/core.h>

namespace emulated_board {

void LinkTally::gone(const std::string& link, const std::string& reason)
{
    {
        const std::lock_guard<std::mutex> lock(m_reasonMutex);
        if (!m_isUp.exchange(false, std::memory_order_relaxed))
            return;
        m_reason = reason;
    }
    fmt::print(stderr, "emulated board: {} went away: {}; the port goes on without it\n", link, reason);
}

KivoBoardLinkCounters LinkTally::counters() const
{
    KivoBoardLinkCounters result{};
    result.framesOut = m_out.frames();
    result.bytesOut = m_out.bytes();
    result.framesIn = m_in.frames();
    result.bytesIn = m_in.bytes();
    result.framesRefused = m_refused.load(std::memory_order_relaxed);
    result.framesLost = m_lost.load(std::memory_order_relaxed);
    result.errors = m_errors.load(std::memory_order_relaxed);
    const std::lock_guard<std::mutex> lock(m_reasonMutex);
    result.isUp = isUp() ? 1 : 0;
    (void)m_reason.copy(result.reason, sizeof(result.reason) - 1);
    return result;
}

} // namespace emulated_board
