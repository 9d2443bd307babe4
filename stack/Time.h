#pragma once

#include <chrono>

namespace mesk::stack {

/// All waits of the stack go by the steady clock, whose time the caller hands in.
using TimePoint = std::chrono::steady_clock::time_point;
using Duration = std::chrono::steady_clock::duration;

/// The deadline of something that waits for nothing.
constexpr TimePoint never = TimePoint::max();

/// @p from plus @p wait; never if that is further than a TimePoint reaches.
/// @param wait not negative.
constexpr TimePoint after(TimePoint from, Duration wait)
{
    return from > never - wait ? never : from + wait;
}

} // namespace mesk::stack
