#pragma once

#include "host/net/Loop.h"
#include "stack/NetworkNode.h"

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace mesk::host {

/// Answers are counted up to here, so that a flood of them stays bounded.
constexpr std::size_t devicesMax = 1024;

/// A device that has answered a discovery. Texts are as the device gives them, in no known character set.
struct FoundDevice {
    IpAddress address; ///< as the device tells it, else that of its answer; 0.0.0.0 while it has none
    MacAddress mac;    ///< likewise
    std::string manufacturer;
    std::string model;
    std::string version;
    std::string serial;
    std::string name; ///< given by the user
};

/// Asks all devices on the net who they are, by broadcast, with leave to answer by broadcast as those must
/// that belong to another net. Asks several times within the wait.
/// @param enough ends the wait as soon as so many with an address have answered.
/// @returns each device once, the first devicesMax of them, in the order of their addresses.
/// @throws Interruption
std::vector<FoundDevice> discoverDevices(stack::NetworkNode& node, Loop& loop, stack::Duration wait,
                                         std::size_t enough = std::numeric_limits<std::size_t>::max());

} // namespace mesk::host
