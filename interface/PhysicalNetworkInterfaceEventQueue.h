#pragma once

#include "interface/PhysicalNetworkInterfaceEvent.h"
#include "support/platform/SynchronizedQueue.h"

#include <boost/shared_ptr.hpp>

#include <atomic>
#include <cstdint>

namespace kivo::core::mesk {

/// The way of an interface's events to the framework.
///
/// The interface makes it and shares it with whoever asks for it, so it may outlive the interface. The
/// framework sets `enabled` and takes events from `queue`; the interface interrupts `queue` when it is
/// asked to stop, and from then on nothing goes in or comes out.
class PhysicalNetworkInterfaceEventQueue {
public:
    using Queue = templates::platform::SynchronizedQueue<boost::shared_ptr<PhysicalNetworkInterfaceEvent>>;
    static constexpr std::uint64_t capacityEvents = 64;

    PhysicalNetworkInterfaceEventQueue();
    PhysicalNetworkInterfaceEventQueue(const PhysicalNetworkInterfaceEventQueue&) = delete;
    PhysicalNetworkInterfaceEventQueue& operator=(const PhysicalNetworkInterfaceEventQueue&) = delete;
    virtual ~PhysicalNetworkInterfaceEventQueue();

    /// [the interface's worker thread] Queues a `PniActionCommandTimeout`; blocks while the queue is
    /// full. The event is dropped while `enabled` is false, once the queue is interrupted, and when
    /// memory runs out. Never throws.
    void postActionCommandTimeout(std::uint16_t count) noexcept;

    std::atomic<bool> enabled{false};     ///< events are queued only while this is true [any thread]
    const boost::shared_ptr<Queue> queue; ///< never null
};

} // namespace kivo::core::mesk
