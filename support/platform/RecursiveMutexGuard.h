#pragma once

#include "support/platform/Guard.h"
#include "support/platform/RecursiveMutex.h"

namespace kivo::templates::platform {

/// Holds a mutex for a scope, which may step out of the lock and back in. One thread at a time.
class RecursiveMutexGuard : public patterns::Guard<RecursiveMutex*> {
public:
    /// @param mutex not null; must outlive the guard.
    explicit RecursiveMutexGuard(RecursiveMutex* mutex)
        : Guard(mutex)
    {
        guarded->lock();
    }
    ~RecursiveMutexGuard() override
    {
        if (locked)
            guarded->unlock();
    }

    void lock()
    {
        guarded->lock();
        locked = true;
    }
    void unlock()
    {
        guarded->unlock();
        locked = false;
    }
};

} // namespace kivo::templates::platform
