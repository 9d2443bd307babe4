#pragma once

#include "stand-ins/board/ActionTimeouts.h"
#include "stand-ins/board/Port.h"

#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace emulated_board {

/// One board. It stays where it is for the life of the library, and a power cycle empties it: calls
/// that are under way in other threads then need no lock against its end. [any thread]
class Board {
public:
    Board();

    void powerOn(const BoardSetup& setup, FirmwareDesign design);
    void configure(FirmwareDesign design);
    /// Ends what powerOn began at a rate. [one thread at a time, never together with powerOn]
    void stopActionTimeouts();
    /// An action command of a port timed out. A status: firmware without action commands doesn't report.
    std::int32_t reportActionTimeout(std::uint32_t port, std::uint16_t count);

    // Register accesses by a design's id, with their effects. A status.
    std::int32_t writeRegister(std::uint32_t id, std::uint64_t value);
    std::int32_t readRegister(std::uint32_t id, std::uint64_t& value) const;
    /// What a register reads, whatever the design has.
    std::uint64_t value(RegisterAddress address) const;
    void setValue(RegisterAddress address, std::uint64_t value);

    /// The receive queue of a port, or behind those its action-timeout queue; null for no such queue.
    DataQueue* queue(std::uint32_t number);
    /// Somebody is about to read a queue of that number.
    void noteReader(std::uint32_t queue);
    /// Null for no such port.
    Port* port(std::uint32_t number);
    /// A port that the next power-on may bring; null for one that no board has.
    Port* possiblePort(std::uint32_t number) { return number < portsMax ? m_ports[number].get() : nullptr; }
    std::uint32_t portCount() const { return m_portCount.load(std::memory_order_relaxed); }
    std::uint32_t device() const { return m_device.load(std::memory_order_relaxed); }
    MdioEngine& phys() { return m_phys; }
    void wakeReaders();

    /// 0 for an unknown key.
    std::int32_t infoInt(const std::string& key) const;
    /// Null for an unknown key. The text stays for the life of the board.
    const char* infoText(const std::string& key) const;
    void setInfoInt(const std::string& key, std::int32_t value);
    void setInfoText(const std::string& key, const char* value);

private:
    bool isThere(RegisterAddress address) const
    {
        const FirmwareDesign design(m_design.load(std::memory_order_relaxed));
        return design.has(address.which) && (address.port == 0 || address.port < portCount());
    }
    void mdioRead();
    void mdioWrite();

    RegisterFile m_registers;
    MdioEngine m_phys;
    std::array<std::unique_ptr<Port>, portsMax> m_ports;
    std::array<ActionTimeouts, portsMax> m_actionTimeouts;
    std::atomic<std::uint64_t> m_design{0};
    std::atomic<std::uint32_t> m_portCount{0};
    std::atomic<std::uint32_t> m_device{0};

    mutable std::mutex m_infoMutex;
    std::map<std::string, std::int32_t> m_infoInts;
    std::map<std::string, const char*> m_infoTexts;
    std::set<std::string> m_textsGiven; // those handed out may be held by anybody
};

} // namespace emulated_board
