#include "host/PortEvents.h"

#include "host/Port.h"
#include "interface/PhysicalNetworkInterfaceEventQueue.h"
#include "interface/PniActionCommandTimeout.h"

namespace mesk::host {

using kivo::core::mesk::PhysicalNetworkInterfaceEvent;
using kivo::core::mesk::PhysicalNetworkInterfaceEventQueue;
using kivo::core::mesk::PniActionCommandTimeout;

struct PortEvents::D {
    boost::shared_ptr<PhysicalNetworkInterfaceEventQueue> queue;
};

PortEvents::PortEvents(Port& port)
    : d(std::make_unique<D>())
{
    d->queue = port.eventQueue();
    d->queue->enabled = true;
}

PortEvents::~PortEvents()
{
    d->queue->enabled = false;
}

std::optional<PortEvents::Event> PortEvents::take()
{
    boost::shared_ptr<PhysicalNetworkInterfaceEvent> event;
    if (!d->queue->queue->tryPop(event)) {
        return std::nullopt;
    }
    if (event->type == PniActionCommandTimeout::eventType) {
        return Event{event->type, "actionCommandTimeout",
                     static_cast<const PniActionCommandTimeout&>(*event).count};
    }
    return Event{event->type, "unknown", 0};
}

} // namespace mesk::host
