#pragma once

#include "packets/MacAddress.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mesk::host {

/// An address and the length of its net's prefix.
struct HostAddress {
    std::uint32_t address = 0xC0A84D01; ///< host order: 192.168.77.1
    unsigned prefixBits = 24;
};

/// What every verb takes.
struct Options {
    int board = 0;
    int port = 0;
    std::optional<std::string> link;
    std::optional<std::string> setupFile;
    std::optional<std::string> rootFolder;
    std::optional<std::string> writeFile;
    std::optional<std::string> logLevel;
    MacAddress mac{0x02, 0x4b, 0x00, 0x00, 0x00, 0x01};
    HostAddress ip;
    bool reset = false;
    bool json = false;
    bool quiet = false;
};

} // namespace mesk::host
