#include "host/describe/TreeFields.h"

#include "host/Table.h"

#include <array>
#include <string>
#include <utility>

namespace mesk::host {

namespace {

constexpr int columnsPerDepth = 4;
constexpr std::size_t bytesShown = 32;

} // namespace

template <typename... Arguments>
void TreeFields::line(std::string_view name, fmt::format_string<Arguments...> format,
                      Arguments&&... arguments)
{
    indent();
    fmt::format_to(fmt::appender(m_out), "{}: ", name);
    fmt::format_to(fmt::appender(m_out), format, std::forward<Arguments>(arguments)...);
    m_out.push_back('\n');
}

void TreeFields::open(std::string_view name)
{
    indent();
    fmt::format_to(fmt::appender(m_out), "{}\n", name);
    ++m_depth;
}

void TreeFields::indent()
{
    fmt::format_to(fmt::appender(m_out), "{:>{}}", m_startsItem ? "- " : "", m_depth * columnsPerDepth);
    m_startsItem = false;
}

void TreeFields::number(std::string_view name, std::uint64_t value)
{
    line(name, "{}", value);
}

void TreeFields::signedNumber(std::string_view name, std::int64_t value)
{
    line(name, "{}", value);
}

void TreeFields::code(std::string_view name, std::uint64_t value, int digits)
{
    line(name, "0x{:0{}x}", value, digits);
}

void TreeFields::flag(std::string_view name, bool value)
{
    line(name, "{}", value);
}

void TreeFields::text(std::string_view name, std::string_view value)
{
    line(name, "{}", printable(std::string(value)));
}

void TreeFields::bytes(std::string_view name, std::string_view value)
{
    constexpr const char* digits = "0123456789abcdef";
    std::array<char, 3 * bytesShown> text{};
    char* to = text.data();
    for (const char each : value.substr(0, bytesShown)) {
        const auto byte = static_cast<unsigned char>(each);
        *to++ = ' ';
        *to++ = digits[byte >> 4];
        *to++ = digits[byte & 0xf];
    }
    line(name, "{} bytes{}{}", value.size(),
         std::string_view(text.data(), static_cast<std::size_t>(to - text.data())),
         value.size() > bytesShown ? " ..." : "");
}

} // namespace mesk::host
