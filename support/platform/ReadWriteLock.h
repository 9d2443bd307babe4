#pragma once

#include "support/platform/os/Event.h"

#include <cstdint>

namespace kivo::templates::platform {

/// Many readers or one writer. Writers go first: as soon as one has announced itself no new reader
/// enters, and a reader that comes then tests in a busy loop. Not recursive in either mode.
/// [any thread]
class ReadWriteLock {
public:
    ReadWriteLock() = default;
    ReadWriteLock(const ReadWriteLock&) = delete;
    ReadWriteLock& operator=(const ReadWriteLock&) = delete;
    virtual ~ReadWriteLock();

    void acquireRead();
    void acquireWrite();
    /// Gives the lock back, whichever way it was taken.
    void release();

private:
    bool tryRead();
    bool tryWrite();

    std::uint32_t m_readers = 0;        ///< threads that hold the lock for reading
    std::uint32_t m_waitingWriters = 0; ///< threads that want to write and don't hold the lock yet
    bool m_writerActive = false;
    os::ManualResetEvent m_noReadersEvent{true};
    os::ManualResetEvent m_noWriterEvent{true};
    os::CriticalSection m_section; ///< guards the counters and the changes of the events
};

} // namespace kivo::templates::platform
