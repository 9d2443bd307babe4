#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

namespace emulated_board {

/// Lets action commands of one port time out at a rate, on a thread of its own. [one thread at a time]
class ActionTimeouts {
public:
    /// Takes the count of the time-outs so far, which wraps to 0.
    using Report = std::function<void(std::uint16_t count)>;

    ActionTimeouts() = default;
    ActionTimeouts(const ActionTimeouts&) = delete;
    ActionTimeouts& operator=(const ActionTimeouts&) = delete;
    ~ActionTimeouts() { stop(); }

    /// Begins anew with a count of 1; not at all at a rate of 0.
    void start(std::uint32_t perSecond, Report report);
    /// After the return nothing is reported any more.
    void stop();

private:
    void run(std::uint32_t perSecond, const Report& report);

    std::mutex m_mutex;
    std::condition_variable m_stopping;
    bool m_stopped = false;
    std::thread m_thread;
};

} // namespace emulated_board
