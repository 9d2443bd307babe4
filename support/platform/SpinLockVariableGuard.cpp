#include "support/platform/SpinLockVariableGuard.h"

#include "support/platform/os/Thread.h"

namespace kivo::templates::platform {

SpinLockVariableGuard::SpinLockVariableGuard(std::atomic<std::uint32_t>* spinVariable,
                                             std::atomic<std::uint32_t>* ownerVariable)
    : m_spinVariable(spinVariable)
    , m_ownerVariable(ownerVariable)
{
    const std::uint32_t self = ownerVariable != nullptr ? os::currentThreadId() : 0;
    // Relaxed: only the thread itself ever stores its own id, so it sees it or sees another value.
    if (ownerVariable != nullptr && ownerVariable->load(std::memory_order_relaxed) == self)
        return;

    std::uint32_t expected = 0;
    while (!spinVariable->compare_exchange_weak(expected, 1, std::memory_order_acquire,
                                                std::memory_order_relaxed))
        expected = 0;
    if (ownerVariable != nullptr)
        ownerVariable->store(self, std::memory_order_relaxed);
    m_acquired = true;
}

SpinLockVariableGuard::~SpinLockVariableGuard()
{
    if (!m_acquired)
        return;
    if (m_ownerVariable != nullptr)
        m_ownerVariable->store(0, std::memory_order_relaxed);
    m_spinVariable->exchange(0, std::memory_order_release);
}

} // namespace kivo::templates::platform
