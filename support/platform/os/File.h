#pragma once

#include <string>

namespace kivo::templates::platform::os {

/// Creates one directory. [any thread]
/// @returns true if the directory exists afterwards, whether this call made it or not.
bool createDirectory(const std::string& path);

/// Reads a whole file. [any thread]
/// @param[out] text the file's bytes; unchanged if the result is false.
/// @returns false if it can't be opened or read, isn't a regular file (a directory, a pipe, a device), or is
///     larger than 64 MiB.
bool readTextFile(const std::string& path, std::string& text);

} // namespace kivo::templates::platform::os
