#include "stand-ins/dispatcher/LevelRules.h"

#include "stand-ins/dispatcher/Parsing.h"

#include <algorithm>

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

std::optional<std::uint32_t> parseLevel(std::string_view text)
{
    for (const LevelWord& each : levelWords)
        if (text == each.word)
            return each.level;
    return parseNumber<std::uint32_t>(text);
}

} // namespace

/// Goes back to the last `*` only, so the time is bounded by the product of the lengths.
bool nameFits(std::string_view pattern, std::string_view name)
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

bool LevelRules::add(std::string_view pattern, std::string_view level)
{
    const auto parsed = parseLevel(level);
    if (pattern.empty() || !parsed)
        return false;
    m_rules.push_back({std::string(pattern), *parsed});
    return true;
}

std::vector<std::string> LevelRules::addList(std::string_view list)
{
    std::vector<std::string> refused;
    while (!list.empty()) {
        const std::size_t comma = std::min(list.find(','), list.size());
        const std::string_view entry = trimmed(list.substr(0, comma));
        list.remove_prefix(std::min(comma + 1, list.size()));
        if (entry.empty())
            continue;
        const std::size_t sign = entry.find('=');
        const bool isRule = sign != std::string_view::npos &&
                            add(trimmed(entry.substr(0, sign)), trimmed(entry.substr(sign + 1)));
        if (!isRule)
            refused.emplace_back(entry);
    }
    return refused;
}

std::uint32_t LevelRules::levelOf(std::string_view logger) const
{
    for (auto rule = m_rules.rbegin(); rule != m_rules.rend(); ++rule)
        if (nameFits(rule->pattern, logger))
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
