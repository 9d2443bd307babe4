#pragma once

#include "support/platform/os/Event.h"

namespace kivo::templates::platform {

/// A mutual exclusion that the thread holding it may lock again; it unlocks as often. [any thread]
class RecursiveMutex {
public:
    RecursiveMutex() = default;
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;
    virtual ~RecursiveMutex();

    /// Waits without a limit.
    void lock();
    void unlock();

private:
    os::NativeRecursiveMutex m_native;
};

} // namespace kivo::templates::platform
