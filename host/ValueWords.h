#pragma once

#include <array>

namespace mesk::host {

/// What a port can be plugged to. Capitals and names of files stand for what the user fills in.
constexpr std::array<const char*, 6> linkKinds = {"camera[:OPTIONS]", "interface:NAME",        "tap:NAME",
                                                  "pair:BOARD.PORT",  "file:IN.pcap,OUT.pcap", "none"};

constexpr std::array<const char*, 5> logLevelWords = {"detail", "information", "warning", "error", "off"};

} // namespace mesk::host
