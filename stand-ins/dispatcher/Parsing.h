#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace kivo::dispatcher {

/// The text without the blanks around it.
inline std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// An unsigned decimal number that takes the whole text; nothing if it is none or doesn't fit the type.
template <typename Number>
std::optional<Number> parseNumber(std::string_view text)
{
    Number number = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, number);
    if (error != std::errc{} || end != last)
        return std::nullopt;
    return number;
}

} // namespace kivo::dispatcher
