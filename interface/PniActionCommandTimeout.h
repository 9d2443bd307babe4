#pragma once

#include "interface/PhysicalNetworkInterfaceEvent.h"

#include <cstdint>

namespace kivo::core::mesk {

/// The firmware gave up on action commands that nobody answered in time.
struct PniActionCommandTimeout : PhysicalNetworkInterfaceEvent {
    static constexpr std::uint32_t eventType = 8;

    explicit PniActionCommandTimeout(std::uint16_t timeouts)
        : PhysicalNetworkInterfaceEvent(eventType)
        , count(timeouts)
    {
    }

    std::uint16_t count; ///< the firmware's action-command timeout count
};

} // namespace kivo::core::mesk
