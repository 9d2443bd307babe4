#pragma once

#include <cstdint>

namespace kivo::templates::platform::os {

/// Puts the calling thread to sleep. [any thread]
/// @param milliseconds at least this long; 0 returns at once.
void sleepMs(std::uint32_t milliseconds);

/// A clock that never goes back, in nanoseconds since an arbitrary start. [any thread]
std::uint64_t monotonicNowNs();

} // namespace kivo::templates::platform::os
