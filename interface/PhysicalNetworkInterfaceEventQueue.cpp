#include "interface/PhysicalNetworkInterfaceEventQueue.h"

#include "interface/PniActionCommandTimeout.h"

#include <boost/make_shared.hpp>

namespace kivo::core::mesk {

PhysicalNetworkInterfaceEventQueue::PhysicalNetworkInterfaceEventQueue()
    : queue(boost::make_shared<Queue>(capacityEvents))
{
}

PhysicalNetworkInterfaceEventQueue::~PhysicalNetworkInterfaceEventQueue() = default;

void PhysicalNetworkInterfaceEventQueue::postActionCommandTimeout(std::uint16_t count) noexcept
{
    if (!enabled) {
        return;
    }
    try {
        queue->push(boost::make_shared<PniActionCommandTimeout>(count), false);
    } catch (...) { // NOLINT(bugprone-empty-catch)
        // An interrupted queue is how a blocked worker learns that it is to end; the event goes with it.
    }
}

} // namespace kivo::core::mesk
