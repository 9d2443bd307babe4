#pragma once

#include <cstdint>

namespace mesk::benchmarks {

/// Heap allocations of the whole process so far: every malloc, and so every operator new.
std::uint64_t allocationCount();

} // namespace mesk::benchmarks
