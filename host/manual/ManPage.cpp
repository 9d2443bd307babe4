#include "host/manual/ManPage.h"

#include <fmt/format.h>

namespace mesk::host {

namespace {

std::string bold(const std::string& text)
{
    return "\\fB" + manText(text) + "\\fR";
}

std::string italic(const std::string& text)
{
    return "\\fI" + manText(text) + "\\fR";
}

/// Like "-v, --verbose" or "--to PORT".
std::string optionHead(const OptionText& option)
{
    std::string head;
    for (const std::string& name : option.names) {
        head += (head.empty() ? "" : ", ") + bold(name);
    }
    return option.value.empty() ? head : head + " " + italic(option.value);
}

std::string entry(const std::string& head, const std::string& description)
{
    return fmt::format(".TP\n{}\n{}\n", head, manText(description));
}

std::string options(const std::vector<OptionText>& texts)
{
    std::string page;
    for (const OptionText& text : texts) {
        page += entry(optionHead(text), text.description);
    }
    return page;
}

std::string inBrackets(const std::string& text, bool isOptional)
{
    return isOptional ? "[" + text + "]" : text;
}

/// Like "mesk-phy relay [options] --to PORT CAPTURE".
std::string usage(const VerbText& verb)
{
    std::string line = bold("mesk-phy " + verb.name) + " [" + italic("options") + "]";
    for (const OptionText& option : verb.options) {
        if (option.isRequired) {
            line += " " + optionHead(option);
        }
    }
    for (const OptionText& argument : verb.arguments) {
        line += " " +
                inBrackets(italic(argument.value) + (argument.isRepeated ? "..." : ""), !argument.isRequired);
    }
    return line;
}

std::string section(const VerbText& verb)
{
    std::string page =
        fmt::format(".SS {}\n{}\n.PP\n{}.\n", manText(verb.name), usage(verb), manText(verb.summary));
    page += verb.details.empty() ? "" : manText(verb.details) + "\n";
    for (const OptionText& argument : verb.arguments) {
        page += entry(italic(argument.value), argument.description);
    }
    page += options(verb.options);
    page += ".PP\nExamples:\n.PP\n.RS\n.nf\n";
    for (const std::string& example : verb.examples) {
        page += manText(example) + "\n";
    }
    return page + ".fi\n.RE\n";
}

} // namespace

std::string manText(const std::string& text)
{
    std::string escaped;
    for (const char each : text) {
        switch (each) {
        case '\\':
            escaped += "\\e";
            break;
        case '-':
            escaped += "\\-";
            break;
        case '\'':
            escaped += "\\(aq";
            break;
        case '.': // at the start of a line it would begin a request
            escaped += escaped.empty() ? "\\&." : ".";
            break;
        default:
            escaped += each;
        }
    }
    return escaped;
}

std::string manOptions(const ProgramText& program)
{
    return options(program.options);
}

std::string manVerbs(const ProgramText& program)
{
    std::string page;
    for (const VerbText& verb : program.verbs) {
        page += section(verb);
    }
    return page;
}

} // namespace mesk::host
