#pragma once

#include "packets/IpAddress.h"

#include <cstdint>
#include <optional>
#include <string>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace mesk::host {

/// A number of at most `limit`, decimal or with 0x hexadecimal.
std::optional<std::uint32_t> parseNumber(const std::string& text, std::uint32_t limit = UINT32_MAX);
/// "0x" and eight digits.
std::string hexText(std::uint32_t number);

// Options and arguments that several verbs have. What they set must outlive the parse.

CLI::Option* addSecondsOption(CLI::App& app, const std::string& name, double& seconds,
                              const std::string& description);
CLI::Option* addNumber(CLI::App& app, const std::string& name, std::uint32_t& number,
                       const std::string& description);
CLI::Option* addIpAddress(CLI::App& app, const std::string& name, std::optional<IpAddress>& address,
                          const std::string& description);
/// "--device": the one device that answers a discovery if it isn't given.
CLI::Option* addDeviceOption(CLI::App& app, std::optional<IpAddress>& device);

} // namespace mesk::host
