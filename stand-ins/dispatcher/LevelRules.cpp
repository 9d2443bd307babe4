#include "stand-ins/dispatcher/LevelRules.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <system_error>

namespace kivo::dispatcher {

namespace {

constexpr std::uint32_t defaultLevel = 4;

struct LevelWord {
    std::uint32_t level;
    std::string_view word;
};
constexpr LevelWord levelWords[] = {
    {2, "detail"}, {3, "information"}, {4, "warning"}, {5, "error"}, {7, "off"},
};

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<std::uint32_t> parseLevel(std::string_view text)
{
    for (const LevelWord& each : levelWords)
        if (text == each.word)
            return each.level;
    std::uint32_t level = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), level);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return level;
}

/// Whether a name fits a pattern. Goes back to the last `*` only, so the time is bounded by the product
/// of the lengths.
bool fits(std::string_view pattern, std::string_view name)
{
    std::size_t p = 0;
    std::size_t n = 0;
    std::size_t star = std::string_view::npos;
    std::size_t afterStar = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            afterStar = n;
        } else if (p < pattern.size() && pattern[p] == name[n]) {
            ++p;
            ++n;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            n = ++afterStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

} // namespace

std::vector<std::string> LevelRules::add(std::string_view list)
{
    std::vector<std::string> refused;
    while (!list.empty()) {
        const std::size_t comma = std::min(list.find(','), list.size());
        const std::string_view entry = trimmed(list.substr(0, comma));
        list.remove_prefix(std::min(comma + 1, list.size()));
        if (entry.empty())
            continue;
        const std::size_t sign = entry.find('=');
        const std::string_view pattern = trimmed(entry.substr(0, sign));
        const auto level =
            sign == std::string_view::npos ? std::nullopt : parseLevel(trimmed(entry.substr(sign + 1)));
        if (pattern.empty() || !level)
            refused.emplace_back(entry);
        else
            m_rules.push_back({std::string(pattern), *level});
    }
    return refused;
}

std::uint32_t LevelRules::levelOf(std::string_view logger) const
{
    for (auto rule = m_rules.rbegin(); rule != m_rules.rend(); ++rule)
        if (fits(rule->pattern, logger))
            return rule->level;
    return defaultLevel;
}

std::string levelName(std::uint32_t level)
{
    for (const LevelWord& each : levelWords)
        if (level == each.level)
            return std::string(each.word);
    return std::to_string(level);
}

} // namespace kivo::dispatcher
