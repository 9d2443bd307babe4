#pragma once

#include "support/logging/Logger.h"
#include "support/platform/os/Thread.h"

#include <cstdint>
#include <locale>
#include <ostream>
#include <sstream>
#include <string>

/// The lines that the interface writes to its log. [any thread]
namespace kivo::core::mesk {

using tools::logging::levelDetail;
using tools::logging::levelError;
using tools::logging::levelInformation;
using tools::logging::levelWarning;

/// Prints a number in lower-case hexadecimal with a leading 0x; 0 prints as a bare 0.
struct Hexadecimal {
    std::uint64_t value;
};
inline std::ostream& operator<<(std::ostream& stream, Hexadecimal number)
{
    const auto flags = stream.flags();
    stream << std::hex << std::showbase << number.value;
    stream.flags(flags);
    return stream;
}

/// Writes the parts one after the other. Numbers come out plain, whatever locale the program set.
template <typename... Parts>
std::string textOf(const Parts&... parts)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    (text << ... << parts);
    return text.str();
}

/// The text of a line that belongs to one interface, from its name on.
template <typename... Parts>
std::string phyText(const std::string& id, const Parts&... parts)
{
    return textOf("PHY Id '", id, parts...);
}

/// Writes one line. Nothing is built, and no part is printed, unless the level is enabled.
template <typename... Parts>
void logLine(tools::logging::Logger& logger, std::uint32_t level, const Parts&... parts)
{
    if (logger.isEnabled(level)) {
        const std::string line =
            textOf("thread-id=", templates::platform::os::currentThreadId(), "|", parts...);
        logger.log(level, line.c_str(), 0, nullptr);
    }
}

/// Writes one line that belongs to one interface.
template <typename... Parts>
void logPhyLine(tools::logging::Logger& logger, std::uint32_t level, const std::string& id,
                const Parts&... parts)
{
    logLine(logger, level, "PHY Id '", id, parts...);
}

} // namespace kivo::core::mesk
