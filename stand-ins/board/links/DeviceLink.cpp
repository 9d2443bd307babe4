#include "stand-ins/board/links/DeviceLink.h"

#include <chrono>

namespace emulated_board {

namespace {

// A device without room is asked again this often, and for so long; a line at full speed has room again
// after microseconds.
constexpr std::chrono::milliseconds roomLook(1);
constexpr int roomLooksMax = 500;

} // namespace

DeviceLink::DeviceLink(std::string name, LineEnd& end)
    : m_name(std::move(name))
    , m_end(end)
    , m_out([this](const WireFrame& frame, const std::atomic<bool>& stopped) { carry(frame, stopped); })
{
}

void DeviceLink::start()
{
    m_out.start();
    m_receiver = std::thread([this] { receiveAll(); });
}

void DeviceLink::stop()
{
    m_stopped.store(true, std::memory_order_relaxed);
    interrupt();
    if (m_receiver.joinable())
        m_receiver.join();
    m_out.stop();
}

bool DeviceLink::send(WireFrame frame)
{
    return m_out.send(std::move(frame));
}

bool DeviceLink::isBusy() const
{
    return m_out.isFull();
}

KivoBoardLinkCounters DeviceLink::counters() const
{
    KivoBoardLinkCounters result = Link::counters();
    const std::lock_guard<std::mutex> lock(m_lostMutex);
    result.framesLost += lostFrames();
    return result;
}

void DeviceLink::receiveAll()
{
    while (!m_stopped.load(std::memory_order_relaxed) && m_tally.isUp()) {
        WireFrame frame;
        Outcome outcome = receive(frame.bytes);
        // What is put together of several frames, or made for a virtual line, no real line could bring.
        if (outcome == Outcome::done && frame.bytes.size() > frameSizeMaxBytes)
            outcome = Outcome::refused;
        count(outcome);
        if (outcome == Outcome::done) {
            m_tally.in().add(frame.bytes.size());
            m_end.arrive(std::move(frame), Patience::flowControl, m_stopped);
        } else if (outcome == Outcome::failed) {
            std::this_thread::sleep_for(roomLook); // it may fail at once, again and again
        }
    }
}

void DeviceLink::carry(const WireFrame& frame, const std::atomic<bool>& stopped)
{
    Outcome outcome = Outcome::refused;
    if (!frame.isIntact()) {
        m_end.refusedAtFarEnd(); // a network card at the far end would drop it, too
    } else if (m_tally.isUp()) {
        outcome = transmit(frame.bytes.data(), frame.size());
        for (int look = 0; outcome == Outcome::noRoom && look < roomLooksMax && !stopped; ++look) {
            std::this_thread::sleep_for(roomLook);
            outcome = transmit(frame.bytes.data(), frame.size());
        }
    }
    count(outcome);
    if (outcome == Outcome::done)
        m_tally.out().add(frame.size());
    else if (outcome == Outcome::gone)
        m_tally.refused(); // as all that follow
}

void DeviceLink::count(Outcome outcome)
{
    switch (outcome) {
    case Outcome::refused:
        m_tally.refused();
        break;
    case Outcome::noRoom:
        m_tally.lost();
        break;
    case Outcome::failed:
        m_tally.failed();
        break;
    case Outcome::gone:
        m_tally.gone(m_name, goneReason());
        break;
    case Outcome::done:
    case Outcome::nothing:
        break;
    }
}

} // namespace emulated_board
