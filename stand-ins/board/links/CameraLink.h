#pragma once

#include "stand-ins/board/links/Link.h"
#include "stand-ins/camera/CameraSetup.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace emulated_board {

/// A cable to an emulated GigE Vision device, which lives on a thread of its own. It is switched on when
/// somebody first reads the port's receive queue or sends: at a port that nobody uses there is neither.
class CameraLink : public Link {
public:
    CameraLink(emulated_camera::CameraSetup setup, LineEnd& end);
    ~CameraLink() override;

    void stop() override;
    void readerCame() override;
    bool send(WireFrame frame) override;
    bool isBusy() const override;
    bool isIdle() const override;

private:
    static constexpr std::size_t inboxMaxFrames = 256;

    void switchOn();
    void live();
    bool waitForFrame(mesk::stack::TimePoint deadline, WireFrame& frame);
    bool isTaken(const WireFrame& frame);
    void deliver(const QByteArray& frame);

    const emulated_camera::CameraSetup m_setup;
    LineEnd& m_end;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<WireFrame> m_inbox;
    std::atomic<std::size_t> m_inFlight{0}; // those in m_inbox and the one that the device has
    std::atomic<bool> m_stopped{false};
    std::thread m_thread;
};

} // namespace emulated_board
