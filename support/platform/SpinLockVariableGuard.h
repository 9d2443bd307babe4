#pragma once

#include <atomic>
#include <cstdint>

namespace kivo::templates::platform {

/// Holds a spin variable for a scope. Another thread waits in a busy loop that neither yields nor
/// sleeps, so this is for short sections only.
class SpinLockVariableGuard {
public:
    /// @param spinVariable 0 free, 1 taken; shared by all guards of one matter.
    /// @param ownerVariable thread id of the holder, 0 when free; it makes the guard recursive. Null:
    ///     the holder must not take the variable again.
    SpinLockVariableGuard(std::atomic<std::uint32_t>* spinVariable,
                          std::atomic<std::uint32_t>* ownerVariable);
    SpinLockVariableGuard(const SpinLockVariableGuard&) = delete;
    SpinLockVariableGuard& operator=(const SpinLockVariableGuard&) = delete;
    virtual ~SpinLockVariableGuard();

private:
    std::atomic<std::uint32_t>* m_spinVariable;
    std::atomic<std::uint32_t>* m_ownerVariable;
    bool m_acquired = false; ///< this guard took the variable, and not one further out
};

} // namespace kivo::templates::platform
