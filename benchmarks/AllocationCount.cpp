#include "benchmarks/AllocationCount.h"

#include <atomic>
#include <cstddef>

namespace {
std::atomic<std::uint64_t> allocations{0};
}

// The C library's own allocator under its second name; this program's malloc comes before it for every
// library of the process.
extern "C" void* __libc_malloc(std::size_t size); // NOLINT(bugprone-reserved-identifier)

extern "C" void* malloc(std::size_t size)
{
    // One thread allocates while a benchmark runs, so a plain load and store would do; relaxed it costs
    // no more.
    allocations.store(allocations.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    return __libc_malloc(size);
}

namespace mesk::benchmarks {

std::uint64_t allocationCount()
{
    return allocations.load(std::memory_order_relaxed);
}

} // namespace mesk::benchmarks
