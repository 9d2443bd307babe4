#pragma once

#include "support/platform/Guard.h"
#include "support/platform/ReadWriteLock.h"

namespace kivo::templates::platform {

/// Holds a `ReadWriteLock` for a scope. One thread at a time.
class ReadWriteLockGuard : public patterns::Guard<ReadWriteLock*> {
public:
    enum Mode : std::uint32_t { Read = 1, Write = 2 };

    /// @param lock not null; must outlive the guard.
    ReadWriteLockGuard(ReadWriteLock* lock, Mode lockMode)
        : Guard(lock)
        , mode(lockMode)
    {
        if (mode == Write)
            guarded->acquireWrite();
        else
            guarded->acquireRead();
    }
    ~ReadWriteLockGuard() override
    {
        if (locked)
            guarded->release();
    }

protected:
    const Mode mode;
};

} // namespace kivo::templates::platform
