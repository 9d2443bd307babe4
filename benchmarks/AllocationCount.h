#pragma once

#include <cstdint>

namespace mesk::benchmarks {

/// Heap allocations of the whole process so far: every malloc, and so every operator new.
std::uint64_t allocationCount();

/// Heap allocations of one call of @p work.
template <typename Work>
double allocationsPer(Work work)
{
    constexpr int rounds = 1000;
    work(); // what is allocated once, at the first time, doesn't count
    const std::uint64_t before = allocationCount();
    for (int i = 0; i < rounds; ++i) {
        work();
    }
    return static_cast<double>(allocationCount() - before) / rounds;
}

} // namespace mesk::benchmarks
