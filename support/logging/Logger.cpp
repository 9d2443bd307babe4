#include "support/logging/Logger.h"

#include "support/logging/Logging.h"
#include "support/platform/RecursiveMutexGuard.h"
#include "support/platform/os/Thread.h"

namespace kivo::tools::logging {

namespace platform = templates::platform;

Logger::Logger(std::uint64_t id, std::uint32_t level)
    : d(new D{id, {}, {}, {level}})
{
}

Logger::~Logger() = default;

bool Logger::threadIsEnabled() const
{
    const platform::RecursiveMutexGuard guard(&d->mutex);
    return d->mutedThreads.count(platform::os::currentThreadId()) == 0;
}

void Logger::log(std::uint32_t level, const char* text, std::uint32_t extraSize, const void* extraData) const
{
    Logging::log(d->id, level, text, extraSize, extraData);
}

bool Logger::setEnabledForCurrentThread(bool enabled)
{
    const std::uint32_t self = platform::os::currentThreadId();
    const platform::RecursiveMutexGuard guard(&d->mutex);
    if (enabled)
        return d->mutedThreads.erase(self) == 0;
    return d->mutedThreads.insert(self).second;
}

} // namespace kivo::tools::logging
