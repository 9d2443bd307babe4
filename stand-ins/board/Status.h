#pragma once

#include <cstdint>

namespace emulated_board {

// What the operations answer beside 0. Users know the time-out alone by its number.
constexpr std::int32_t statusFailed = -1;
constexpr std::int32_t statusBadHandle = -2101;
constexpr std::int32_t statusNoRegister = -2102;
constexpr std::int32_t statusBadArgument = -2103;
constexpr std::int32_t statusTimeout = -2120;

} // namespace emulated_board
