#pragma once

#include "support/platform/RecursiveMutex.h"

#include <cstdint>
#include <map>
#include <string>

namespace kivo::templates::platform {

/// One known property. No field is null but in the row that closes a table, where all are.
struct TweakPropertyRow {
    const char* key;                 ///< `<Section>::<Name>`, looked up in exact case
    const char* environmentVariable; ///< empty: none
    const char* commandLineWord;     ///< empty: none
    const char* defaultValue;        ///< may be empty
};

/// The properties of the runtime, closed by a row of nulls.
extern const TweakPropertyRow TweakPropertyTable[];

/// The parsed contents of one settings file: lines `name = value` under headers `[section]`, a comment
/// from `#` to the end of the line, the last assignment wins. [any thread]
class ConfigFile {
public:
    /// @param sections keys are `<section>::<name>`, and a line before the first header is ignored;
    ///     without, brackets mean nothing and keys are the bare names.
    /// @param exactCase keys match in exact case; without, in any.
    explicit ConfigFile(bool sections = true, bool exactCase = false);
    ConfigFile(const ConfigFile&) = delete;
    ConfigFile& operator=(const ConfigFile&) = delete;

    /// @param keepEntries what was loaded before stays.
    /// @param overwrite a later assignment replaces an earlier one.
    /// @returns false if the file can't be opened; the entries are unchanged then.
    bool load(const std::string& path, bool keepEntries, bool overwrite);

    /// @param[out] found whether there is such a key; may be null.
    /// @returns the value, the empty text without one. The reference stays valid until the next `load`.
    const std::string& value(const std::string& key, bool* found = nullptr) const;

private:
    std::map<std::string, std::string> m_entries; ///< normalised full key to value
    const bool m_useSections;
    const bool m_caseSensitive;
    mutable RecursiveMutex m_mutex; ///< guards the entries
    const std::string m_emptyValue;
};

/// A store for one lookup: it reads what it needs, each file at most once, and forgets everything at
/// its end. [any thread]
class TweakProperties {
public:
    TweakProperties() = default;
    TweakProperties(const TweakProperties&) = delete;
    TweakProperties& operator=(const TweakProperties&) = delete;
    virtual ~TweakProperties();

    /// The first value that converts to `T`, out of: command line (the last occurrence first), per-user
    /// file, installation-wide file, environment variable, default. `T` is `std::int32_t`.
    /// @param table closed by a row of nulls; the first call decides, and it must outlive the store.
    /// @param userFilePath,systemFilePath empty: no such file.
    /// @param argc,argv the command line to search, or 0 and null.
    /// @throws std::runtime_error if the name isn't in the table or no source gave a valid value.
    template <typename T>
    T getProperty(const TweakPropertyRow* table, const std::string& userFilePath,
                  const std::string& systemFilePath, const std::string& name, std::int32_t argc,
                  const char* const* argv);

private:
    struct LoadedOnce {
        bool loaded = false; ///< loaded, or tried
        ConfigFile file;
        RecursiveMutex mutex; ///< guards `loaded`
    };

    static const std::string& fileValue(LoadedOnce& source, const std::string& path, const std::string& name);
    const TweakPropertyRow& row(const TweakPropertyRow* table, const std::string& name);

    LoadedOnce m_user;
    LoadedOnce m_system;
    bool m_rowsIndexed = false;
    std::map<std::string, const TweakPropertyRow*> m_rowIndex;
    RecursiveMutex m_rowIndexMutex; ///< guards the build of the index
};

/// [any thread] Looks one property up in a store of its own, so that a changed file or variable counts
/// from the next call on. The files are `$APPDATA/kivo/rt.conf`, whose directory is made, and `rt.conf`
/// in the installation root. `T` is `std::int32_t`.
/// @throws std::runtime_error as `TweakProperties::getProperty`.
template <typename T>
T readTweakProperty(const std::string& name, std::int32_t argc, const char* const* argv);

} // namespace kivo::templates::platform
