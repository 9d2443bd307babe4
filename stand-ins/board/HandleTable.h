#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>

namespace emulated_board {

enum class HandleKind : std::uint8_t { device = 1, listedDevice = 2, design = 3 };

/// Handles that are held. A handle is used once: a freed one is refused for good. Looking a handle up
/// takes no lock, since every register access does it. [any thread]
class HandleTable {
public:
    /// A new handle for `target`, 0 if too many are held.
    std::uint64_t add(HandleKind kind, std::uint64_t target);
    /// Whether the handle was held and was of that kind.
    bool remove(HandleKind kind, std::uint64_t handle);
    void clear();

    /// The target of a handle for a device, of either kind.
    std::optional<std::uint64_t> device(std::uint64_t handle) const
    {
        return kindOf(handle) != HandleKind::design ? target(handle) : std::nullopt;
    }
    std::optional<std::uint64_t> design(std::uint64_t handle) const
    {
        return kindOf(handle) == HandleKind::design ? target(handle) : std::nullopt;
    }
    std::uint32_t held(bool designs) const;

private:
    static constexpr std::size_t slotCount = 1024;
    static constexpr unsigned kindShift = 12;
    static constexpr unsigned serialShift = 16;
    struct Slot {
        std::atomic<std::uint64_t> handle{0};
        std::atomic<std::uint64_t> target{0};
    };

    static HandleKind kindOf(std::uint64_t handle) { return HandleKind((handle >> kindShift) & 0xF); }
    std::optional<std::uint64_t> target(std::uint64_t handle) const
    {
        const Slot& slot = m_slots[handle % slotCount];
        if (handle == 0 || slot.handle.load(std::memory_order_acquire) != handle)
            return std::nullopt;
        return slot.target.load(std::memory_order_relaxed);
    }

    std::array<Slot, slotCount> m_slots;
    mutable std::mutex m_mutex; // of those who add and remove
    std::uint64_t m_serial = 0;
};

} // namespace emulated_board
