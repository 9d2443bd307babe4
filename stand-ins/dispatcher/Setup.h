#pragma once

#include "stand-ins/dispatcher/LevelRules.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kivo::dispatcher {

/// Where lines go.
struct SinkSetup {
    bool toStderr = true;
    std::string file; ///< full path, "%p" stands for the process id; empty: no file
    std::uint64_t fileSizeBytes = 10U << 20;
    std::uint32_t fileCount = 5; ///< the one that is written and those that were rotated away

    bool operator==(const SinkSetup& other) const;
};

/// What the set-up file says, with defaults for what it doesn't say.
struct Setup {
    LevelRules levels;
    SinkSetup sinks;
    std::vector<std::string> complaints; ///< one for each line that was ignored
};

/// Reads a set-up file: sections `[levels]` and `[sinks]`, lines "key = value", comments from ; or # at
/// the start of a line. Reads on behind a bad line. A file that isn't there gives the defaults.
Setup readSetup(const std::string& path);

} // namespace kivo::dispatcher
