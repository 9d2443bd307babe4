#include "stand-ins/board/ActionTimeouts.h"

#include <chrono>
#include <utility>

namespace emulated_board {

void ActionTimeouts::start(std::uint32_t perSecond, Report report)
{
    stop();
    if (perSecond == 0)
        return;
    m_stopped = false;
    m_thread = std::thread([this, perSecond, reporting = std::move(report)] { run(perSecond, reporting); });
}

void ActionTimeouts::stop()
{
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopped = true;
    }
    m_stopping.notify_one();
    m_thread.join();
}

void ActionTimeouts::run(std::uint32_t perSecond, const Report& report)
{
    const auto period = std::chrono::nanoseconds(std::chrono::seconds(1)) / perSecond;
    auto next = std::chrono::steady_clock::now();
    std::uint16_t count = 0;
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_stopping.wait_until(lock, next += period, [this] { return m_stopped; }))
        report(++count);
}

} // namespace emulated_board
