#include "stand-ins/board/MdioEngine.h"

namespace emulated_board {

namespace {

constexpr std::uint32_t controlRegister = 0;
constexpr std::uint32_t selectorRegister = 29;
constexpr std::uint32_t indirectRegister = 30;
constexpr std::uint16_t controlReset = 0x8000;
constexpr std::uint16_t nobodyDrives = 0xFFFF;

/// A gigabit PHY with a partner: auto-negotiation done, link up, 1000 Mb/s full duplex.
constexpr std::array<std::uint16_t, 32> powerOnRegisters()
{
    std::array<std::uint16_t, 32> registers{};
    registers[0] = 0x1140;  // control: auto-negotiation, full duplex, 1000 Mb/s
    registers[1] = 0x796D;  // status: all abilities, negotiation complete, link up
    registers[2] = 0x4B56;  // identifier, a made-up maker
    registers[3] = 0x4D10;  // identifier: model 0x11, revision 0
    registers[4] = 0x01E1;  // advertised: 10 and 100 Mb/s
    registers[5] = 0xC1E1;  // the partner's: the same, acknowledged
    registers[6] = 0x000F;  // expansion: the partner negotiates, a page came
    registers[9] = 0x0300;  // advertised: 1000 Mb/s
    registers[10] = 0x3C00; // the partner's: 1000 Mb/s, both receivers well
    registers[15] = 0x3000; // extended status: 1000BASE-T
    return registers;
}

} // namespace

void MdioEngine::Phy::forget()
{
    registers = powerOnRegisters();
    indirect.clear();
    resetReadsLeft = 0;
}

std::uint16_t MdioEngine::Phy::value(std::uint32_t number) const
{
    if (number == indirectRegister) {
        const auto found = indirect.find(registers[selectorRegister]);
        return found != indirect.end() ? found->second : std::uint16_t(0);
    }
    const bool inReset = number == controlRegister && (held || resetReadsLeft > 0);
    return std::uint16_t(registers[number] | (inReset ? controlReset : 0U));
}

void MdioEngine::powerOn(std::uint32_t resetReads)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Phy& phy : m_phys) {
        phy.forget();
        phy.resetReads = resetReads;
        phy.held = false;
    }
    m_resetLines.store((1U << phyCount) - 1, std::memory_order_relaxed);
}

std::uint16_t MdioEngine::read(std::uint32_t phy, std::uint32_t number)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (phy >= phyCount || number >= 32 || !isRunning(phy))
        return nobodyDrives;
    Phy& chip = m_phys[phy];
    const std::uint16_t value = chip.value(number);
    if (number == controlRegister && chip.resetReadsLeft > 0)
        --chip.resetReadsLeft;
    return value;
}

void MdioEngine::write(std::uint32_t phy, std::uint32_t number, std::uint16_t value)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (phy >= phyCount || number >= 32 || !isRunning(phy))
        return;
    Phy& chip = m_phys[phy];
    if (number == indirectRegister) {
        chip.indirect[chip.registers[selectorRegister]] = value;
    } else if (number == controlRegister && (value & controlReset) != 0) {
        // A reset by software keeps the indirect registers: they take effect with it.
        chip.registers = powerOnRegisters();
        chip.registers[controlRegister] = std::uint16_t(value & ~controlReset);
        chip.resetReadsLeft = chip.resetReads;
    } else {
        chip.registers[number] = value;
    }
}

void MdioEngine::setResetLines(std::uint32_t lines)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (std::uint32_t n = 0; n < phyCount; ++n) {
        if (((lines >> n) & 1U) == 0)
            m_phys[n].forget();
    }
    m_resetLines.store(lines, std::memory_order_relaxed);
}

bool MdioEngine::hold(std::uint32_t phy, bool held)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (phy >= phyCount)
        return false;
    m_phys[phy].held = held;
    return true;
}

bool MdioEngine::setResetReads(std::uint32_t phy, std::uint32_t reads)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (phy >= phyCount)
        return false;
    m_phys[phy].resetReads = reads;
    return true;
}

std::uint16_t MdioEngine::peek(std::uint32_t phy, std::uint32_t number) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return phy < phyCount && number < 32 ? m_phys[phy].value(number) : nobodyDrives;
}

std::uint16_t MdioEngine::peekIndirect(std::uint32_t phy, std::uint16_t selector) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (phy >= phyCount)
        return nobodyDrives;
    const auto found = m_phys[phy].indirect.find(selector);
    return found != m_phys[phy].indirect.end() ? found->second : std::uint16_t(0);
}

void MdioEngine::poke(std::uint32_t phy, std::uint32_t number, std::uint16_t value)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (phy >= phyCount || number >= 32)
        return;
    if (number == indirectRegister)
        m_phys[phy].indirect[m_phys[phy].registers[selectorRegister]] = value;
    else
        m_phys[phy].registers[number] = value;
}

} // namespace emulated_board
