#pragma once

namespace mesk::host {

/// Whether standard output, or standard error, is a terminal that takes control sequences.
bool standardOutputIsTerminal();
bool standardErrorIsTerminal();

/// Whether standard output ends in a file, or nowhere.
bool standardOutputIsFile();

/// Whether results may be coloured: on a terminal, unless NO_COLOR is set (no-color.org).
bool colourWanted();

} // namespace mesk::host
