#pragma once

#include <string>

namespace emulated_board {

/// How a user gets a right to run the program with, as the rest of a sentence.
/// @param capability as setpriv takes it, "net_raw".
std::string adviceOnRights(const std::string& capability);

} // namespace emulated_board
