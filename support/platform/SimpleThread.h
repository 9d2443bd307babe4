#pragma once

#include "support/platform/RecursiveMutex.h"
#include "support/platform/os/Event.h"
#include "support/platform/os/Thread.h"

#include <cstdint>

namespace kivo::templates::platform {

/// A thread with a body in a derived class. There is no stop operation: the derived class keeps a
/// flag that its `run` polls, and the owner sets the flag and then joins.
///
/// The derived class joins without a limit in its own destructor too, before its fields go, since
/// `run` works on them.
class SimpleThread {
public:
    /// No limit for `join`.
    static constexpr std::uint32_t noTimeout = 0xFFFFFFFF;

    SimpleThread() = default;
    SimpleThread(const SimpleThread&) = delete;
    SimpleThread& operator=(const SimpleThread&) = delete;

    /// The thread's body. No exception may leave it.
    virtual void run() = 0;
    /// Joins without a limit. Not on the thread itself.
    virtual ~SimpleThread();

    /// [any thread] Runs `run` on a thread of its own; nothing happens if it runs already. A thread
    /// that has ended can be started again.
    /// @returns false if the system gave no thread.
    bool start();

    /// [any thread] Waits for the end of `run`. When the result is true the thread is gone for the
    /// operating system as well, so none of its code runs any more; that last wait, for what a thread does
    /// behind `run`, has no limit.
    /// @returns whether the thread has ended, or never ran; false at once on the thread itself.
    bool join(std::uint32_t timeoutSeconds = noTimeout);

private:
    static void enter(void* self);
    void finish();

    os::NativeThread m_thread;
    std::uint32_t m_threadId = 0; ///< 0 when there is no thread
    bool m_running = false;       ///< between a successful start and the end of run
    bool m_finished = true;       ///< false only while the thread is to run or runs
    RecursiveMutex m_mutex;       ///< guards all fields above
    os::ManualResetEvent m_endEvent{true};
};

/// [any thread] Names the calling thread for debugging tools; cut to what the platform takes. Failure
/// is ignored.
void setCurrentThreadName(const char* name);

} // namespace kivo::templates::platform
