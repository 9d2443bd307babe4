#pragma once

#include "stack/NetworkNode.h"

#include <optional>
#include <string>

namespace mesk::host {

/// What every verb takes.
struct Options {
    int board = 0;
    int port = 0;
    std::optional<std::string> link;
    std::optional<std::string> setupFile;
    std::optional<std::string> rootFolder;
    std::optional<std::string> writeFile;
    std::optional<std::string> logLevel;
    std::optional<MacAddress> mac;
    std::optional<stack::NetAddress> ip;
    bool reset = false;
    bool json = false;
    bool quiet = false;

    /// The addresses of this side, 02:4b:00:00:00:01 and 192.168.77.1/24 unless they are given.
    MacAddress ownMac() const { return mac.value_or(MacAddress(0x02, 0x4b, 0x00, 0x00, 0x00, 0x01)); }
    stack::NetAddress ownAddress() const { return ip.value_or(stack::NetAddress{IpAddress(0xc0a84d01), 24}); }
};

} // namespace mesk::host
