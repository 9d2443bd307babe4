#include "stand-ins/board/links/CameraLink.h"

#include "stand-ins/camera/CameraDevice.h"
#include "support/platform/os/Thread.h"

namespace emulated_board {

namespace {

using Clock = std::chrono::steady_clock;

// IEEE 802.3, with an 802.1Q tag: the device takes no jumbo frames.
constexpr std::size_t deviceFrameMaxBytes = 1518;

} // namespace

CameraLink::CameraLink(emulated_camera::CameraSetup setup, LineEnd& end)
    : m_setup(std::move(setup))
    , m_end(end)
{
}

CameraLink::~CameraLink()
{
    CameraLink::stop();
}

void CameraLink::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopped.store(true, std::memory_order_relaxed);
    }
    m_changed.notify_all();
    if (m_thread.joinable()) // nobody makes it any more
        m_thread.join();
}

void CameraLink::readerCame()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    switchOn();
}

/// With the mutex held.
void CameraLink::switchOn()
{
    if (!m_thread.joinable() && !m_stopped.load(std::memory_order_relaxed))
        m_thread = std::thread([this] { live(); });
}

bool CameraLink::send(WireFrame frame)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (isBusy() || m_stopped.load(std::memory_order_relaxed))
            return false;
        switchOn();
        m_inbox.push_back(std::move(frame));
        m_inFlight.fetch_add(1, std::memory_order_release);
    }
    m_changed.notify_all();
    return true;
}

bool CameraLink::isBusy() const
{
    return m_inFlight.load(std::memory_order_acquire) >= inboxMaxFrames;
}

bool CameraLink::isIdle() const
{
    return m_inFlight.load(std::memory_order_acquire) == 0;
}

/// The device's life.
void CameraLink::live()
{
    kivo::templates::platform::os::nameCurrentThread("camera");
    emulated_camera::CameraDevice device(m_setup, [this](const QByteArray& frame) { deliver(frame); });
    device.powerOn(Clock::now());
    while (!m_stopped.load(std::memory_order_relaxed)) {
        WireFrame frame;
        if (waitForFrame(device.nextDeadline(), frame)) {
            if (isTaken(frame)) {
                m_tally.out().add(frame.size());
                device.receive(
                    QByteArray(reinterpret_cast<const char*>(frame.bytes.data()), int(frame.size())),
                    Clock::now());
            }
            m_inFlight.fetch_sub(1, std::memory_order_release);
        }
        if (const auto now = Clock::now(); device.nextDeadline() <= now)
            device.expire(now);
    }
}

bool CameraLink::waitForFrame(mesk::stack::TimePoint deadline, WireFrame& frame)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const auto isOver = [this] { return m_stopped.load(std::memory_order_relaxed) || !m_inbox.empty(); };
    if (deadline == mesk::stack::never)
        m_changed.wait(lock, isOver);
    else
        m_changed.wait_until(lock, deadline, isOver);
    if (m_inbox.empty())
        return false;
    frame = std::move(m_inbox.front());
    m_inbox.pop_front();
    return true;
}

bool CameraLink::isTaken(const WireFrame& frame)
{
    const bool intact = frame.isIntact();
    if (!intact)
        m_end.refusedAtFarEnd();
    if (intact && frame.size() <= deviceFrameMaxBytes)
        return true;
    m_tally.refused();
    return false;
}

void CameraLink::deliver(const QByteArray& frame)
{
    WireFrame wire;
    wire.bytes.assign(frame.begin(), frame.end());
    m_tally.in().add(wire.bytes.size());
    m_end.arrive(std::move(wire), Patience::flowControl, m_stopped);
}

} // namespace emulated_board
