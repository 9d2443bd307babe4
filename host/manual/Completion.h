#pragma once

#include "host/manual/ProgramText.h"

namespace mesk::host {

// Parts of the completion scripts.

/// Words with a blank between them; a kind of link that takes more ends behind its colon.
std::string linkWords();
std::string levelWords();
std::string verbWords(const ProgramText& program);

/// Branches of a case over the verb, "" for what every verb takes: each prints the options.
std::string bashOptions(const ProgramText& program);
/// Branches of a case over "VERB OPTION" and, for arguments, "VERB ": each prints what the value is.
std::string bashValues(const ProgramText& program);

/// Elements of an array for _arguments.
std::string zshOptions(const ProgramText& program);
/// Elements of an array for _describe.
std::string zshVerbs(const ProgramText& program);
/// Branches of a case over the verb: each calls _arguments, with the array `common` before its own.
std::string zshArguments(const ProgramText& program);

} // namespace mesk::host
