#include "support/platform/os/Clock.h"

#include <chrono>
#include <thread>

namespace kivo::templates::platform::os {

void sleepMs(std::uint32_t milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

std::uint64_t monotonicNowNs()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
}

} // namespace kivo::templates::platform::os
