#include "stand-ins/board/Board.h"

#include "stand-ins/board/Status.h"

namespace emulated_board {

Board::Board()
{
    for (std::uint32_t n = 0; n < portsMax; ++n)
        m_ports[n] = std::make_unique<Port>(n, m_registers, m_phys);
}

void Board::powerOn(const BoardSetup& setup, FirmwareDesign design)
{
    m_registers.powerOn();
    m_phys.powerOn(setup.phyResetReads);
    for (std::uint32_t n = 0; n < setup.ports; ++n)
        m_ports[n]->powerOn(setup);
    m_portCount.store(setup.ports, std::memory_order_relaxed);
    m_device.store(setup.device, std::memory_order_relaxed);
    configure(design);
    {
        const std::lock_guard<std::mutex> lock(m_infoMutex);
        m_infoInts = setup.infoInts;
        m_infoTexts.clear();
    }
    for (const auto& [key, text] : setup.infoTexts)
        setInfoText(key, text.c_str());
    for (const auto& [number, perSecond] : setup.actionTimeoutsPerSecond) {
        m_actionTimeouts[number].start(
            perSecond, [this, n = number](std::uint16_t count) { reportActionTimeout(n, count); });
    }
}

void Board::stopActionTimeouts()
{
    for (ActionTimeouts& each : m_actionTimeouts)
        each.stop();
}

std::int32_t Board::reportActionTimeout(std::uint32_t number, std::uint16_t count)
{
    Port* const found = port(number);
    if (found == nullptr || !isThere({Register::actionCmdConfigData, number}))
        return statusFailed;
    const std::uint32_t word = endOfTransmission | count;
    found->actionQueue().putSome(&word, 1); // one that finds no room is counted there
    return 0;
}

void Board::configure(FirmwareDesign design)
{
    m_design.store(design.registers(), std::memory_order_relaxed);
}

std::int32_t Board::writeRegister(std::uint32_t id, std::uint64_t value)
{
    const auto address = registerOfId(id);
    if (!address || !isThere(*address))
        return statusNoRegister;
    m_registers.set(address->which, address->port, value);
    Port& port = *m_ports[address->port];
    switch (address->which) {
    case Register::writeData:
        port.transmitter().write(value);
        break;
    case Register::bufferReset:
        port.transmitter().reset();
        break;
    case Register::writeComplete:
        port.transmit();
        break;
    case Register::mdioRead:
        mdioRead();
        break;
    case Register::mdioWrite:
        mdioWrite();
        break;
    case Register::gigeReset:
        m_phys.setResetLines(std::uint32_t(value));
        break;
    default:
        break; // it is enough that the value is there
    }
    return 0;
}

std::int32_t Board::readRegister(std::uint32_t id, std::uint64_t& result) const
{
    const auto address = registerOfId(id);
    if (!address || !isThere(*address))
        return statusNoRegister;
    result = value(*address);
    return 0;
}

std::uint64_t Board::value(RegisterAddress address) const
{
    Port& port = *m_ports[address.port];
    const std::uint64_t held = m_registers.get(address.which, address.port);
    switch (address.which) {
    case Register::txTransferActive:
        return port.transferActive();
    case Register::gvcpFifoNotEmpty:
        return held | (port.receiveQueue().isCongested() ? 1U : 0U);
    default:
        return held;
    }
}

void Board::setValue(RegisterAddress address, std::uint64_t value)
{
    m_registers.set(address.which, address.port, value);
}

void Board::mdioRead()
{
    const auto phy = std::uint32_t(m_registers.get(Register::mdioPhyAddr));
    const auto number = std::uint32_t(m_registers.get(Register::mdioRegAddr));
    m_registers.set(Register::mdioReadData, 0, m_phys.read(phy, number));
}

void Board::mdioWrite()
{
    const auto phy = std::uint32_t(m_registers.get(Register::mdioPhyAddr));
    const auto number = std::uint32_t(m_registers.get(Register::mdioRegAddr));
    m_phys.write(phy, number, std::uint16_t(m_registers.get(Register::mdioData)));
}

DataQueue* Board::queue(std::uint32_t number)
{
    Port* const found = port(number % portsMax);
    if (found == nullptr || number >= 2 * portsMax)
        return nullptr;
    return number < portsMax ? &found->receiveQueue() : &found->actionQueue();
}

void Board::noteReader(std::uint32_t queue)
{
    if (Port* const found = port(queue))
        found->noteReader();
}

Port* Board::port(std::uint32_t number)
{
    return number < portCount() ? m_ports[number].get() : nullptr;
}

void Board::wakeReaders()
{
    for (const auto& each : m_ports) {
        each->receiveQueue().wakeReaders();
        each->actionQueue().wakeReaders();
    }
}

std::int32_t Board::infoInt(const std::string& key) const
{
    const std::lock_guard<std::mutex> lock(m_infoMutex);
    const auto found = m_infoInts.find(key);
    return found != m_infoInts.end() ? found->second : 0;
}

const char* Board::infoText(const std::string& key) const
{
    const std::lock_guard<std::mutex> lock(m_infoMutex);
    const auto found = m_infoTexts.find(key);
    return found != m_infoTexts.end() ? found->second : nullptr;
}

void Board::setInfoInt(const std::string& key, std::int32_t value)
{
    const std::lock_guard<std::mutex> lock(m_infoMutex);
    m_infoInts[key] = value;
}

void Board::setInfoText(const std::string& key, const char* value)
{
    const std::lock_guard<std::mutex> lock(m_infoMutex);
    m_infoTexts[key] = value != nullptr ? m_textsGiven.insert(value).first->c_str() : nullptr;
}

} // namespace emulated_board
