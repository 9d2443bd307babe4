#pragma once

#include "plugin/LibraryInitController.h"
#include "support/platform/GuardedSingletonBase.h"
#include "support/platform/SpinLockVariableGuard.h"

#include <cstdint>

/// A process-wide object that is made at its first use and ends with the `LibraryInitController`,
/// newest first. `T` derives from `GuardedSingleton<T>` and has a default constructor.
template <typename T>
class GuardedSingleton : public GuardedSingletonBase {
public:
    /// [any thread] The object, made now if there is none. Code that runs inside `init` on the same
    /// thread gets the object being initialised; another thread spins until `init` has returned.
    /// Without a controller the object is made and never torn down.
    static T* instance();

    InstancePointer* instancePointer(InstancePointer** out) override { return *out = &s_instance; }
    /// Called once, right after the object was made and registered.
    virtual void init() {}

private:
    inline static InstancePointer s_instance{nullptr};
    inline static std::atomic<std::uint32_t> s_spin{0};
    inline static std::atomic<std::uint32_t> s_owner{0};
};

template <typename T>
T* GuardedSingleton<T>::instance()
{
    const kivo::templates::platform::SpinLockVariableGuard guard(&s_spin, &s_owner);
    if (s_instance.load(std::memory_order_acquire) == nullptr) {
        T* const made = new T;
        // Stored before the registration and init, so that a call from within finds it.
        s_instance.store(made, std::memory_order_release);
        LibraryInitController::registerSingleton(made);
        made->init();
    }
    return static_cast<T*>(s_instance.load(std::memory_order_acquire));
}
