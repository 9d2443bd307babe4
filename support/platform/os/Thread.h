#pragma once

#include <cstdint>

namespace kivo::templates::platform::os {

/// The kernel's id of the calling thread, never 0. [any thread]
std::uint32_t currentThreadId();

/// Names the calling thread for debuggers and process listings; cut to the platform's length.
/// Failure is ignored. [any thread]
void nameCurrentThread(const char* name);

/// A thread of the operating system. Not copyable; each object holds one thread at most, and is used
/// by one thread at a time.
///
/// There is no creation in suspended state here: an owner that needs one lets the entry wait on a
/// lock that it holds itself.
class NativeThread {
public:
    using Entry = void (*)(void* argument);

    NativeThread() = default;
    NativeThread(const NativeThread&) = delete;
    NativeThread& operator=(const NativeThread&) = delete;
    /// A thread that is still held must have been joined.
    ~NativeThread();

    /// Creates the thread and runs `entry(argument)` on it.
    /// @returns false if the system gave no thread.
    bool start(Entry entry, void* argument);

    /// Waits for the thread's end at the operating system's level and releases it. Does nothing
    /// without a thread. Must not be called on the thread itself.
    void join();

private:
    unsigned long m_thread = 0;
    bool m_held = false;
};

} // namespace kivo::templates::platform::os
