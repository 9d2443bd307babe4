#pragma once

#include "stand-ins/board/links/Link.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace emulated_board {

/// One direction of a link: frames that are in flight, and the thread that carries them to `sink`. The
/// number of frames in flight is bounded, so that a sender that outruns the far end is held back.
class Wire {
public:
    /// Called on the wire's thread for each frame; it may wait, but not after `stopped` is true.
    using Sink = std::function<void(WireFrame frame, const std::atomic<bool>& stopped)>;
    /// Called on the wire's thread when no frame is left in flight.
    using Drained = std::function<void()>;

    explicit Wire(Sink sink, Drained drained = {});
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;
    ~Wire();

    void start();
    /// Carries what is in flight, without waits, and joins the thread. May be called again.
    void stop();

    bool send(WireFrame frame);
    bool isFull() const { return m_inFlight.load(std::memory_order_acquire) >= capacityFrames; }
    bool isIdle() const { return m_inFlight.load(std::memory_order_acquire) == 0; }

private:
    static constexpr std::size_t capacityFrames = 256;

    void run();

    const Sink m_sink;
    const Drained m_drained;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<WireFrame> m_frames;
    std::atomic<std::size_t> m_inFlight{0}; // those in m_frames and the one that the sink has
    std::atomic<bool> m_stopped{false};
    std::thread m_thread;
};

} // namespace emulated_board
