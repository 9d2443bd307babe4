#pragma once

#include "support/logging/Logger.h"
#include "support/platform/os/Thread.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

/// The lines that the interface writes to its log. [any thread]
namespace kivo::core::mesk {

using tools::logging::levelDetail;
using tools::logging::levelError;
using tools::logging::levelInformation;
using tools::logging::levelWarning;

/// A text that is put together from its parts, without a stream's locale: that costs more than the
/// numbers themselves, and a program that sets one would get marks into them.
class LineText {
public:
    LineText() { m_text.reserve(usualBytes); }

    LineText& operator<<(std::string_view part)
    {
        m_text.append(part);
        return *this;
    }
    template <typename Integer,
              std::enable_if_t<std::is_integral_v<Integer> && (sizeof(Integer) > 1), int> = 0>
    LineText& operator<<(Integer number)
    {
        return append(number, 10);
    }
    template <typename Integer>
    LineText& append(Integer number, int base)
    {
        std::array<char, 24> digits; // NOLINT(*-member-init): as many as 64 bits need, written below
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, base).ptr;
        m_text.append(digits.data(), end);
        return *this;
    }
    std::string take() { return std::move(m_text); }

private:
    static constexpr std::size_t usualBytes = 127;

    std::string m_text;
};

/// Prints a number in lower-case hexadecimal with a leading 0x; 0 prints as a bare 0.
struct Hexadecimal {
    std::uint64_t value;
};
inline LineText& operator<<(LineText& text, Hexadecimal number)
{
    return (number.value != 0 ? text << "0x" : text).append(number.value, 16);
}

/// Writes the parts one after the other.
template <typename... Parts>
std::string textOf(const Parts&... parts)
{
    LineText text;
    (text << ... << parts);
    return text.take();
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
