#pragma once

#include <cstdint>
#include <memory>

namespace kivo::templates::platform::os {

/// A mutual exclusion that its holder may take again.
class NativeRecursiveMutex {
public:
    NativeRecursiveMutex();
    ~NativeRecursiveMutex();
    NativeRecursiveMutex(const NativeRecursiveMutex&) = delete;
    NativeRecursiveMutex& operator=(const NativeRecursiveMutex&) = delete;
    void lock();
    void unlock();

private:
    struct D;
    std::unique_ptr<D> d;
};

/// A mutual exclusion for short sections; its holder must not take it again. Fits std::lock_guard.
class CriticalSection {
public:
    CriticalSection();
    ~CriticalSection();
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;
    void lock();
    void unlock();

private:
    struct D;
    std::unique_ptr<D> d;
};

/// A manual-reset event: once set, every wait passes until it is reset. [any thread]
class ManualResetEvent {
public:
    explicit ManualResetEvent(bool signalled);
    ~ManualResetEvent();
    ManualResetEvent(const ManualResetEvent&) = delete;
    ManualResetEvent& operator=(const ManualResetEvent&) = delete;
    void set();
    void reset();
    /// Waits without a limit.
    void wait();
    /// Waits for the time given at most.
    /// @returns whether the event was signalled.
    bool waitFor(std::uint64_t milliseconds);

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace kivo::templates::platform::os
