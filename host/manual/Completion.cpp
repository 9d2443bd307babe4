#include "host/manual/Completion.h"

#include "host/ValueWords.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <string_view>

namespace mesk::host {

namespace {

std::string namesOf(const std::vector<OptionText>& options)
{
    std::vector<std::string> names;
    for (const OptionText& option : options) {
        names.insert(names.end(), option.names.begin(), option.names.end());
    }
    return fmt::format("{}", fmt::join(names, " "));
}

std::string bashValuesOf(const std::string& verb, const std::vector<OptionText>& options)
{
    std::string branches;
    for (const OptionText& option : options) {
        if (!option.value.empty()) {
            for (const std::string& name : option.names) {
                branches += fmt::format("        {}' {}') echo '{}' ;;\n", verb, name, option.value);
            }
        }
    }
    return branches;
}

/// Within single quotes, where `marks` mean something to the function that reads it.
std::string quoted(const std::string& text, std::string_view marks)
{
    std::string result;
    for (const char each : text) {
        if (each == '\'') {
            result += "'\\''";
            continue;
        }
        if (marks.find(each) != std::string_view::npos) {
            result += '\\';
        }
        result += each;
    }
    return result;
}

/// Text within an element for _arguments.
std::string zshText(const std::string& text)
{
    return quoted(text, "[]:\\");
}

/// Like "PORT:_mesk_phy_value PORT".
std::string zshValue(const OptionText& option)
{
    return fmt::format("{0}:_mesk_phy_value {0}", zshText(option.value));
}

std::string zshOption(const OptionText& option, const std::string& name)
{
    const std::string description = zshText(option.description);
    if (option.value.empty()) {
        return fmt::format("'{}[{}]'", name, description);
    }
    return fmt::format("'{}=[{}]:{}'", name, description, zshValue(option));
}

std::vector<std::string> zshElements(const std::vector<OptionText>& options)
{
    std::vector<std::string> elements;
    for (const OptionText& option : options) {
        for (const std::string& name : option.names) {
            elements.push_back(zshOption(option, name));
        }
    }
    return elements;
}

} // namespace

std::string linkWords()
{
    std::vector<std::string_view> words;
    for (const std::string_view kind : linkKinds) {
        const std::size_t colon = kind.find(':');
        words.push_back(colon == std::string_view::npos ? kind : kind.substr(0, colon + 1));
    }
    return fmt::format("{}", fmt::join(words, " "));
}

std::string levelWords()
{
    return fmt::format("{}", fmt::join(logLevelWords, " "));
}

std::string verbWords(const ProgramText& program)
{
    std::vector<std::string> names;
    for (const VerbText& verb : program.verbs) {
        names.push_back(verb.name);
    }
    return fmt::format("{}", fmt::join(names, " "));
}

std::string bashOptions(const ProgramText& program)
{
    std::string branches = fmt::format("        '') echo '{}' ;;\n", namesOf(program.options));
    for (const VerbText& verb : program.verbs) {
        branches += fmt::format("        {}) echo '{}' ;;\n", verb.name, namesOf(verb.options));
    }
    return branches;
}

std::string bashValues(const ProgramText& program)
{
    std::string branches;
    for (const VerbText& verb : program.verbs) {
        branches += bashValuesOf(verb.name, verb.options);
        if (!verb.arguments.empty()) {
            branches += fmt::format("        {}' ') echo '{}' ;;\n", verb.name, verb.arguments.front().value);
        }
    }
    return branches + bashValuesOf("*", program.options);
}

std::string zshOptions(const ProgramText& program)
{
    return fmt::format("        {}\n", fmt::join(zshElements(program.options), "\n        "));
}

std::string zshVerbs(const ProgramText& program)
{
    std::string elements;
    for (const VerbText& verb : program.verbs) {
        elements += fmt::format("        '{}:{}'\n", verb.name, quoted(verb.summary, ":\\"));
    }
    return elements;
}

std::string zshArguments(const ProgramText& program)
{
    std::string branches;
    for (const VerbText& verb : program.verbs) {
        std::vector<std::string> elements = zshElements(verb.options);
        for (const OptionText& argument : verb.arguments) {
            elements.push_back(fmt::format("'{}:{}'", argument.isRepeated ? "*" : "", zshValue(argument)));
        }
        branches += fmt::format(
            "        {})\n            _arguments $common \\\n                {}\n            ;;\n", verb.name,
            fmt::join(elements, " \\\n                "));
    }
    return branches;
}

} // namespace mesk::host
