#pragma once

#include <cstdio>
#include <string>

namespace mesk::host {

/// Opens a file for reading; "-" is standard input. A stream that may keep its reader waiting (a pipe, a
/// terminal) ends when an interrupt is requested.
/// @returns null, with errno set, if it can't be opened; else the caller closes it.
std::FILE* openInput(const std::string& path);

} // namespace mesk::host
