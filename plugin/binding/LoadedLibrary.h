#pragma once

#include "support/platform/os/Module.h"

#include <cstdint>
#include <memory>
#include <string>

namespace kivo::plugin {

/// One shared library that was loaded from the installation root.
///
/// `freeOnDestroy` is false on every object that the plugin makes: destroying the object leaves the
/// library loaded for the rest of the process. One thread at a time.
struct LoadedLibrary {
    LoadedLibrary() = default;
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;
    ~LoadedLibrary();

    /// The address of an exported name; null if the library has none of that name.
    void* symbol(const char* name) const;

    templates::platform::os::ModuleHandle handle = nullptr; ///< null when not loaded
    bool freeOnDestroy = false;
    std::string path;            ///< full path of the library
    std::uint32_t lastError = 0; ///< system error code of the last load, 0 after a success
    std::string lastErrorText;   ///< system message for `lastError`, empty after a success
};

/// Loads `<root>/bin/<name>` with the platform's suffix. [any thread]
/// @param name bare library name.
/// @param root null means `findInstallRoot()`.
/// @returns null if there is no root, if the path with its terminator doesn't fit 1024 bytes, or if
///     the library can't be loaded. A second call for one name gives a new object for the same
///     loaded library.
std::unique_ptr<LoadedLibrary> loadLibrary(const char* name, const char* root);

} // namespace kivo::plugin
