#include "host/verbs/NetArguments.h"

#include "host/CommandLine.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <charconv>

namespace mesk::host {

std::optional<std::uint32_t> parseNumber(const std::string& text, std::uint32_t limit)
{
    const bool hexadecimal = text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0;
    const char* const end = text.data() + text.size();
    std::uint32_t number = 0;
    const auto [stop, error] =
        std::from_chars(text.data() + (hexadecimal ? 2 : 0), end, number, hexadecimal ? 16 : 10);
    if (error != std::errc() || stop != end || number > limit) {
        return std::nullopt;
    }
    return number;
}

std::string hexText(std::uint32_t number)
{
    return fmt::format("0x{:08x}", number);
}

CLI::Option* addSecondsOption(CLI::App& app, const std::string& name, double& seconds,
                              const std::string& description)
{
    return app
        .add_option_function<std::string>(
            name, [name, &seconds](const std::string& text) { seconds = parseSeconds(name, text); },
            description)
        ->type_name("S");
}

CLI::Option* addNumber(CLI::App& app, const std::string& name, std::uint32_t& number,
                       const std::string& description)
{
    return app
        .add_option_function<std::string>(
            name,
            [name, &number](const std::string& text) {
                const auto parsed = parseNumber(text);
                if (!parsed) {
                    throw CLI::ValidationError(name,
                                               "'" + text + "' is no number of 32 bits, like 2560 or 0xa00");
                }
                number = *parsed;
            },
            description)
        ->type_name("N");
}

CLI::Option* addIpAddress(CLI::App& app, const std::string& name, std::optional<IpAddress>& address,
                          const std::string& description)
{
    return app
        .add_option_function<std::string>(
            name,
            [name, &address](const std::string& text) {
                address = parseIpAddress(text);
                if (!address) {
                    throw CLI::ValidationError(name, "'" + text + "' is no address like 192.168.77.20");
                }
            },
            description)
        ->type_name("A.B.C.D");
}

CLI::Option* addDeviceOption(CLI::App& app, std::optional<IpAddress>& device)
{
    return addIpAddress(app, "--device", device, "the device (the only one that answers a discovery)");
}

} // namespace mesk::host
