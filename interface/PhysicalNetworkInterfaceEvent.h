#pragma once

#include <cstdint>

namespace kivo::core::mesk {

/// Something that a network interface reports to the framework.
struct PhysicalNetworkInterfaceEvent {
    explicit PhysicalNetworkInterfaceEvent(std::uint32_t eventType)
        : type(eventType)
    {
    }
    PhysicalNetworkInterfaceEvent(const PhysicalNetworkInterfaceEvent&) = delete;
    PhysicalNetworkInterfaceEvent& operator=(const PhysicalNetworkInterfaceEvent&) = delete;
    virtual ~PhysicalNetworkInterfaceEvent() = default;

    std::uint32_t type; ///< says which derived class this is
};

} // namespace kivo::core::mesk
