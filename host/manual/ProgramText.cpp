#include "host/manual/ProgramText.h"

#include "host/CommandLine.h"
#include "host/verbs/VerbTable.h"

#include <CLI/CLI.hpp>

#include <sstream>

namespace mesk::host {

namespace {

/// With single blanks for line ends and what stands around them.
std::string oneLine(const std::string& text)
{
    std::istringstream words(text);
    std::string line;
    for (std::string word; words >> word;) {
        line += (line.empty() ? "" : " ") + word;
    }
    return line;
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

OptionText readOption(const CLI::Option& option)
{
    OptionText text;
    if (option.get_positional()) {
        text.names.push_back(option.get_name(true));
        text.value = text.names.front();
    } else {
        for (const std::string& name : option.get_snames()) {
            text.names.push_back("-" + name);
        }
        for (const std::string& name : option.get_lnames()) {
            text.names.push_back("--" + name);
        }
        text.value = option.get_items_expected_max() > 0 ? option.get_type_name() : "";
    }
    text.description = oneLine(option.get_description());
    text.isRequired = option.get_required();
    text.isRepeated = option.get_items_expected_max() > 1;
    return text;
}

/// The options or the arguments. What the parser gives each verb, its help, is among those of the program.
std::vector<OptionText> readOptions(const CLI::App& app, bool arguments)
{
    std::vector<OptionText> texts;
    for (const CLI::Option* option : app.get_options()) {
        const bool isInherited = app.get_parent() != nullptr && option == app.get_help_ptr();
        if (option->get_positional() == arguments && !isInherited) {
            texts.push_back(readOption(*option));
        }
    }
    return texts;
}

} // namespace

ProgramText readProgramText()
{
    Options options;
    CLI::App app;
    const DeclaredVerbs verbs = declareProgram(app, options);

    ProgramText program;
    program.version = app.version();
    program.exitCodes = oneLine(app.get_footer());
    program.options = readOptions(app, false);
    for (const VerbEntry& entry : verbTable()) {
        const CLI::App& sub = *app.get_subcommand(entry.name);
        program.verbs.push_back({entry.name, oneLine(entry.summary), oneLine(entry.details),
                                 linesOf(entry.examples), readOptions(sub, false), readOptions(sub, true)});
    }
    return program;
}

} // namespace mesk::host
