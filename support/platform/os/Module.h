#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kivo::templates::platform::os {

/// A loaded shared library; null is none.
using ModuleHandle = void*;

/// Between the directories of a path, and behind a library's bare name.
constexpr char pathSeparator = '/';
constexpr const char* librarySuffix = ".so";

/// What loading a shared library gave.
struct ModuleLoad {
    ModuleHandle handle = nullptr; ///< null on failure
    std::uint32_t error = 0;       ///< the system's error code, 0 on success
    std::string errorText;         ///< the system's message, empty on success
};

/// Loads a shared library, or counts one use more of a loaded one. [any thread]
/// @param path of the file, absolute.
ModuleLoad loadModule(const char* path);

/// Gives one use back. [any thread]
void freeModule(ModuleHandle handle);

/// The address of an exported name; null if the library has no such name. [any thread]
void* moduleSymbol(ModuleHandle handle, const char* name);

/// Finds the file of the module that holds an address, as an absolute path with links resolved.
/// [any thread]
/// @param[out] buffer takes the zero-terminated path, cut to the size.
/// @returns the length of the whole path without terminator; 0 if no module holds the address; a
///     result of `size` or more says that the path was cut.
std::size_t modulePathOf(const void* address, char* buffer, std::size_t size);

} // namespace kivo::templates::platform::os
