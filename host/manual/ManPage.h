#pragma once

#include "host/manual/ProgramText.h"

namespace mesk::host {

// Parts of a manual page, as source of man(7).

std::string manText(const std::string& text);
std::string manOptions(const ProgramText& program);
/// A section for each verb: how it is called, what it does, its own options, examples.
std::string manVerbs(const ProgramText& program);

} // namespace mesk::host
