#pragma once

#include <atomic>

/// What the `LibraryInitController` needs of a singleton to tear it down: it calls `deinit`, asks for
/// the static pointer, deletes the object and stores null in the pointer.
class GuardedSingletonBase {
public:
    /// The static variable that holds a singleton. Atomic, since teardown stores null in it without
    /// the singleton's own guard.
    using InstancePointer = std::atomic<GuardedSingletonBase*>;

    GuardedSingletonBase() = default;
    GuardedSingletonBase(const GuardedSingletonBase&) = delete;
    GuardedSingletonBase& operator=(const GuardedSingletonBase&) = delete;

    /// Called right before the object is deleted.
    virtual void deinit() {}
    /// @param[out] out takes the address of the static instance pointer; not null.
    /// @returns the same address.
    virtual InstancePointer* instancePointer(InstancePointer** out) = 0;
    virtual ~GuardedSingletonBase() = default;
};
