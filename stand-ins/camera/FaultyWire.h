#pragma once

#include "stand-ins/camera/CameraCounters.h"
#include "stand-ins/camera/CameraSetup.h"

#include <deque>
#include <random>

namespace emulated_camera {

/// Stands between the device and the wire, and lets go wrong what the set-up asks for. The same seed and the
/// same frames give the same faults. [one thread at a time]
class FaultyWire {
public:
    static constexpr std::size_t delayedMax = 256; ///< frames beyond them are lost

    FaultyWire(const Faults& faults, CameraCounters& counters, mesk::stack::NetworkNode::SendFrame send);

    /// An acknowledge as it goes out: with another id, cut short, or as it is.
    QByteArray spoil(const QByteArray& acknowledge);
    void send(const QByteArray& frame);

    /// Tells the time, by which frames are delayed, and sends those that are due.
    void expire(mesk::stack::TimePoint now);
    mesk::stack::TimePoint nextDeadline() const;

private:
    struct Delayed {
        mesk::stack::TimePoint due;
        QByteArray frame;
    };
    bool happens(double probability);
    void sendOnce(const QByteArray& frame);

    Faults m_faults;
    CameraCounters& m_counters;
    mesk::stack::NetworkNode::SendFrame m_send;
    std::mt19937 m_random;
    std::deque<Delayed> m_delayed;
    mesk::stack::TimePoint m_now{};
};

} // namespace emulated_camera
