#pragma once

#include <cstdint>

namespace kivo::plugin {

/// What a wrapper with a status result answers for an operation that isn't there.
constexpr std::int32_t kHalUnavailable = -2130;
constexpr std::int32_t dovUnavailable = -114;

/// What `bindDov()` answers where the library can't be loaded.
constexpr std::int32_t dovNotLoaded = -1;

/// The board library's answer to a queue read whose time-out ran out.
constexpr std::int32_t kHalQueueTimeout = -2120;

} // namespace kivo::plugin
