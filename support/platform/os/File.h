#pragma once

#include <string>

namespace kivo::templates::platform::os {

/// Creates one directory. [any thread]
/// @returns true if the directory exists afterwards, whether this call made it or not.
bool createDirectory(const std::string& path);

/// Reads a whole file. [any thread]
/// @param[out] text the file's bytes; unchanged if the result is false.
/// @returns false if the file can't be opened for reading, or isn't a file of text (a directory).
bool readTextFile(const std::string& path, std::string& text);

} // namespace kivo::templates::platform::os
