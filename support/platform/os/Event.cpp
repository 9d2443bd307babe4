#include "support/platform/os/Event.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace kivo::templates::platform::os {

namespace {
// Ten years: as good as no limit, and far from where the clock's arithmetic would wrap.
constexpr std::uint64_t waitMaxMs = 10ULL * 365 * 24 * 3600 * 1000;
} // namespace

struct NativeRecursiveMutex::D {
    std::recursive_mutex mutex;
};

NativeRecursiveMutex::NativeRecursiveMutex()
    : d(std::make_unique<D>())
{
}
NativeRecursiveMutex::~NativeRecursiveMutex() = default;

void NativeRecursiveMutex::lock()
{
    d->mutex.lock();
}

void NativeRecursiveMutex::unlock()
{
    d->mutex.unlock();
}

struct CriticalSection::D {
    std::mutex mutex;
};

CriticalSection::CriticalSection()
    : d(std::make_unique<D>())
{
}
CriticalSection::~CriticalSection() = default;

void CriticalSection::lock()
{
    d->mutex.lock();
}

void CriticalSection::unlock()
{
    d->mutex.unlock();
}

struct ManualResetEvent::D {
    explicit D(bool initially)
        : signalled(initially)
    {
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool signalled;
    /// Number of sets: a set frees all who wait, even if a reset comes before they have woken up.
    std::uint64_t sets = 0;
};

ManualResetEvent::ManualResetEvent(bool signalled)
    : d(std::make_unique<D>(signalled))
{
}
ManualResetEvent::~ManualResetEvent() = default;

void ManualResetEvent::set()
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    d->signalled = true;
    ++d->sets;
    // Under the lock: who waits may destroy the event as soon as it can take the lock.
    d->changed.notify_all();
}

void ManualResetEvent::reset()
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    d->signalled = false;
}

void ManualResetEvent::wait()
{
    std::unique_lock<std::mutex> lock(d->mutex);
    const std::uint64_t setsBefore = d->sets;
    d->changed.wait(lock, [&] { return d->signalled || d->sets != setsBefore; });
}

bool ManualResetEvent::waitFor(std::uint64_t milliseconds)
{
    std::unique_lock<std::mutex> lock(d->mutex);
    const std::uint64_t setsBefore = d->sets;
    return d->changed.wait_for(lock, std::chrono::milliseconds(std::min(milliseconds, waitMaxMs)),
                               [&] { return d->signalled || d->sets != setsBefore; });
}

} // namespace kivo::templates::platform::os
