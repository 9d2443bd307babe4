#include "stand-ins/board/HandleTable.h"

namespace emulated_board {

std::uint64_t HandleTable::add(HandleKind kind, std::uint64_t target)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (std::size_t i = 0; i < slotCount; ++i) {
        Slot& slot = m_slots[i];
        if (slot.handle.load(std::memory_order_relaxed) != 0)
            continue;
        const std::uint64_t handle = (++m_serial << serialShift) | (std::uint64_t(kind) << kindShift) | i;
        slot.target.store(target, std::memory_order_relaxed);
        slot.handle.store(handle, std::memory_order_release);
        return handle;
    }
    return 0;
}

bool HandleTable::remove(HandleKind kind, std::uint64_t handle)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (kindOf(handle) != kind || !target(handle))
        return false;
    m_slots[handle % slotCount].handle.store(0, std::memory_order_release);
    return true;
}

void HandleTable::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Slot& slot : m_slots)
        slot.handle.store(0, std::memory_order_release);
}

std::uint32_t HandleTable::held(bool designs) const
{
    std::uint32_t count = 0;
    for (const Slot& slot : m_slots) {
        const std::uint64_t handle = slot.handle.load(std::memory_order_relaxed);
        if (handle != 0 && (kindOf(handle) == HandleKind::design) == designs)
            ++count;
    }
    return count;
}

} // namespace emulated_board
