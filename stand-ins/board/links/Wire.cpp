#include "stand-ins/board/links/Wire.h"

namespace emulated_board {

Wire::Wire(Sink sink, Drained drained)
    : m_sink(std::move(sink))
    , m_drained(std::move(drained))
{
}

Wire::~Wire()
{
    stop();
}

void Wire::start()
{
    if (!m_thread.joinable())
        m_thread = std::thread([this] { run(); });
}

void Wire::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopped.store(true, std::memory_order_relaxed);
    }
    m_changed.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

bool Wire::send(WireFrame frame)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (isFull() || m_stopped.load(std::memory_order_relaxed))
            return false;
        m_frames.push_back(std::move(frame));
        m_inFlight.fetch_add(1, std::memory_order_release);
    }
    m_changed.notify_all();
    return true;
}

void Wire::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [&] { return !m_frames.empty() || m_stopped.load(std::memory_order_relaxed); });
        if (m_frames.empty())
            return;
        WireFrame frame = std::move(m_frames.front());
        m_frames.pop_front();
        const bool last = m_frames.empty();
        lock.unlock();
        m_sink(std::move(frame), m_stopped);
        if (last && m_drained)
            m_drained();
        m_inFlight.fetch_sub(1, std::memory_order_release);
        lock.lock();
    }
}

} // namespace emulated_board
