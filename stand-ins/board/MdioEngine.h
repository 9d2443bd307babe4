#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>

namespace emulated_board {

constexpr std::uint32_t phyCount = 4;

/// The four PHYs behind the MDIO lines and their reset lines: clause-22 registers of IEEE 802.3, with
/// register 30 as a window on the indirect register that register 29 selects. A PHY whose reset line is
/// low reads 0xFFFF and takes no write; so does an address without a PHY. [any thread]
class MdioEngine {
public:
    /// All PHYs run, links are up, no PHY is held; a reset bit shows in `resetReads` reads.
    void powerOn(std::uint32_t resetReads);
    std::uint16_t read(std::uint32_t phy, std::uint32_t number);
    void write(std::uint32_t phy, std::uint32_t number, std::uint16_t value);
    /// Bit n is the reset line of PHY n: low holds it, and a PHY that comes out of it has forgotten all.
    void setResetLines(std::uint32_t lines);
    bool isRunning(std::uint32_t phy) const
    {
        return phy >= phyCount || ((m_resetLines.load(std::memory_order_relaxed) >> phy) & 1U) != 0;
    }

    // What the control interface does; false for no such PHY.
    bool hold(std::uint32_t phy, bool held);
    bool setResetReads(std::uint32_t phy, std::uint32_t reads);
    /// A look that is no read: it does not count for the reset bit.
    std::uint16_t peek(std::uint32_t phy, std::uint32_t number) const;
    std::uint16_t peekIndirect(std::uint32_t phy, std::uint16_t selector) const;
    void poke(std::uint32_t phy, std::uint32_t number, std::uint16_t value);

private:
    struct Phy {
        std::array<std::uint16_t, 32> registers{};
        std::map<std::uint16_t, std::uint16_t> indirect;
        std::uint32_t resetReads = 0;
        std::uint32_t resetReadsLeft = 0;
        bool held = false;

        void forget();
        std::uint16_t value(std::uint32_t number) const;
    };

    mutable std::mutex m_mutex;
    std::array<Phy, phyCount> m_phys;
    std::atomic<std::uint32_t> m_resetLines{0};
};

} // namespace emulated_board
