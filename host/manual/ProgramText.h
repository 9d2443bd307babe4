#pragma once

#include <string>
#include <vector>

namespace mesk::host {

/// An option, or a verb's argument.
struct OptionText {
    std::vector<std::string> names; ///< as they are typed, the long one last; of an argument: its own
    std::string value;              ///< what stands behind the name, like "FILE"; empty for a flag
    std::string description;
    bool isRequired = false;
    bool isRepeated = false; ///< takes several values
};

struct VerbText {
    std::string name;
    std::string summary;
    std::string details; ///< sentences, or empty
    std::vector<std::string> examples;
    std::vector<OptionText> options;
    std::vector<OptionText> arguments;
};

/// All that the command line takes, as its parser knows it.
struct ProgramText {
    std::string version; ///< with the program's name
    std::string exitCodes;
    std::vector<OptionText> options; ///< those that every verb takes
    std::vector<VerbText> verbs;
};

ProgramText readProgramText();

} // namespace mesk::host
