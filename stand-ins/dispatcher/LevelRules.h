#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::dispatcher {

/// Which named logger has which level: rules of a name, with `*` for any run of characters, and a level.
/// Of the rules that fit a name the last one counts. One thread at a time while rules are added.
class LevelRules {
public:
    /// Adds one rule. Levels are the words detail (2), information (3), warning (4), error (5), off (7), or
    /// numbers.
    /// @returns false, and nothing is added, if the two are no rule.
    bool add(std::string_view pattern, std::string_view level);

    /// Adds rules as in "*=3,guard.library=information". Blanks around names and levels are ignored.
    /// @returns the entries that are no rule; they are left out.
    std::vector<std::string> addList(std::string_view list);

    /// @returns the level of a logger; that of a warning where no rule fits.
    std::uint32_t levelOf(std::string_view logger) const;

private:
    struct Rule {
        std::string pattern;
        std::uint32_t level;
    };
    std::vector<Rule> m_rules;
};

/// The word of a level, or its number if it has none.
std::string levelName(std::uint32_t level);

/// Whether a name fits a pattern, in which `*` stands for any run of characters.
bool nameFits(std::string_view pattern, std::string_view name);

} // namespace kivo::dispatcher
