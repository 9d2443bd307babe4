#pragma once

#include "stand-ins/board/RegisterFile.h"

#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <utility>

namespace emulated_board {

/// Which registers a firmware has: a bit per Register.
class FirmwareDesign {
public:
    FirmwareDesign() = default;
    explicit FirmwareDesign(std::uint64_t registers)
        : m_registers(registers)
    {
    }

    static FirmwareDesign without(std::initializer_list<Register> lacking);
    void remove(Register which) { m_registers &= ~bit(which); }
    bool has(Register which) const { return (m_registers & bit(which)) != 0; }
    std::uint64_t registers() const { return m_registers; }

private:
    static std::uint64_t bit(Register which) { return std::uint64_t(1) << unsigned(which); }

    std::uint64_t m_registers = (std::uint64_t(1) << registerCount) - 1;
};

/// Major and minor of a firmware.
using FirmwareVersion = std::pair<std::uint8_t, std::uint8_t>;

/// The designs that the runtime knows, by firmware version.
using DesignCatalogue = std::map<FirmwareVersion, FirmwareDesign>;

/// 2.0 has everything, 2.1 no action commands, 2.2 no counters, 2.3 no CRC control; 1.0 has none of
/// these and no GigeTxTransferActive either.
DesignCatalogue builtInDesigns();

} // namespace emulated_board
