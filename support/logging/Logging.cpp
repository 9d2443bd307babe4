#include "support/logging/Logging.h"

#include "plugin/binding/LoadedLibrary.h"
#include "support/logging/LoggingDispatcherDescriptor.h"
#include "support/platform/ReadWriteLockGuard.h"

#include <atomic>
#include <map>

namespace kivo::tools::logging {

using templates::platform::ReadWriteLock;
using templates::platform::ReadWriteLockGuard;

struct Logging::D {
    std::unique_ptr<Logger> defaultLogger = std::make_unique<Logger>(0, levelOff);
    // Filled by the dispatcher while the instance's spin guard keeps all other threads out.
    GetLoggerFunction getLoggerFunction = nullptr;
    LogFunction logFunction = nullptr;
    /// Null while no dispatcher is attached. The functions stay callable after it went: a dispatcher's
    /// library is never unloaded.
    std::atomic<const LoggingDispatcherDescriptor*> descriptor{nullptr};
    std::map<std::uint64_t, std::unique_ptr<Logger>> loggers;
    std::unique_ptr<plugin::LoadedLibrary> dispatcherLibrary;
    ReadWriteLock lock; ///< guards the loggers

    bool attached() const { return descriptor.load(std::memory_order_acquire) != nullptr; }
};

Logging::Logging()
    : d(std::make_unique<D>())
{
}

Logging::~Logging()
{
    {
        const ReadWriteLockGuard guard(&d->lock, ReadWriteLockGuard::Write);
        d->loggers.clear();
    }
    // A dispatcher that has gone wants no farewell.
    if (const LoggingDispatcherDescriptor* const descriptor = d->descriptor)
        descriptor->detach(this);
}

void Logging::init()
{
    d->dispatcherLibrary = plugin::loadLibrary(loggingDispatcherLibrary, nullptr);
    if (d->dispatcherLibrary == nullptr)
        return;
    const auto* const descriptor = static_cast<const LoggingDispatcherDescriptor*>(
        d->dispatcherLibrary->symbol(loggingDispatcherSymbol));
    if (descriptor == nullptr) {
        d->dispatcherLibrary.reset();
        return;
    }
    d->descriptor = descriptor;
    descriptor->attach(this, &dispatcherGone, &levelChanged, &d->getLoggerFunction, &d->logFunction);
}

Logger* Logging::getLogger(const char* name)
{
    D& r = *instance()->d;
    // The function is still null for a call that comes on this thread from within attach.
    if (!r.attached() || r.getLoggerFunction == nullptr)
        return r.defaultLogger.get();

    std::uint64_t id = 0;
    std::uint32_t level = 0;
    r.getLoggerFunction(name, &id, &level);

    const ReadWriteLockGuard guard(&r.lock, ReadWriteLockGuard::Write);
    // The level of a logger that exists stays: later changes arrive through levelChanged.
    if (const auto known = r.loggers.find(id); known != r.loggers.end())
        return known->second.get();
    return r.loggers.emplace(id, std::make_unique<Logger>(id, level)).first->second.get();
}

void Logging::log(std::uint64_t id, std::uint32_t level, const char* text, std::uint32_t extraSize,
                  const void* extraData)
{
    const D& r = *instance()->d;
    if (r.attached() && r.logFunction != nullptr)
        r.logFunction(id, level, text, extraSize, extraData);
}

void Logging::levelChanged(std::uint64_t id, std::uint32_t level)
{
    D& r = *instance()->d;
    const ReadWriteLockGuard guard(&r.lock, ReadWriteLockGuard::Read);
    const auto found = r.loggers.find(id);
    if (found != r.loggers.end())
        found->second->setLevel(level);
}

void Logging::dispatcherGone()
{
    instance()->d->descriptor = nullptr;
}

} // namespace kivo::tools::logging
