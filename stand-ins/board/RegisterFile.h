#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace emulated_board {

/// A board has at most this many ports: the action-timeout queue of a port is its number + 8.
constexpr std::uint32_t portsMax = 8;

/// The firmware's registers. The first group exists once per port.
enum class Register : std::uint8_t {
    bufferReset,
    writeData,
    writeComplete,
    txDisableCrcGeneration,
    txTransferActive,
    recvPktCnt,
    recvErrCnt,
    ctrlPktReceivedCnt,
    ctrlPktSendUiqCnt,
    gvspFifoOverflow,
    gvcpFifoNotEmpty,
    actionCmdConfigData,
    portTxStart,
    mdioRead, // from here on: once per board
    mdioWrite,
    mdioData,
    mdioRegAddr,
    mdioPhyAddr,
    mdioReadData,
    gigeReset,
    txStart,
    rxEnable,
};
constexpr std::size_t registerCount = 22;
constexpr bool isPerPort(Register which)
{
    return which < Register::mdioRead;
}

/// One register of one port; the port of a board-wide register is 0.
struct RegisterAddress {
    Register which;
    std::uint32_t port;
};

/// The register of a whole name, as in "GigeWriteData2" or "GigE_Reset".
std::optional<RegisterAddress> registerOfName(std::string_view name);
/// The register of a name without port number.
std::optional<Register> registerOfBaseName(std::string_view name);
/// The same for every design, so that a design that is loaded anew keeps its ids. Never 0.
std::uint32_t registerId(RegisterAddress address);
constexpr std::uint32_t firstRegisterId = 0x1000;
inline std::optional<RegisterAddress> registerOfId(std::uint32_t id)
{
    const std::uint32_t index = id - firstRegisterId;
    const RegisterAddress address{Register(index / portsMax), index % portsMax};
    if (index >= registerCount * portsMax || (address.port != 0 && !isPerPort(address.which)))
        return std::nullopt;
    return address;
}
std::string registerName(RegisterAddress address);

/// What the registers of one board hold. [any thread], without a lock.
class RegisterFile {
public:
    void powerOn();
    std::uint64_t get(Register which, std::uint32_t port = 0) const
    {
        return m_values[std::size_t(which)][port].load(std::memory_order_relaxed);
    }
    void set(Register which, std::uint32_t port, std::uint64_t value)
    {
        m_values[std::size_t(which)][port].store(value, std::memory_order_relaxed);
    }
    void count(Register which, std::uint32_t port)
    {
        m_values[std::size_t(which)][port].fetch_add(1, std::memory_order_relaxed);
    }

private:
    std::array<std::array<std::atomic<std::uint64_t>, portsMax>, registerCount> m_values{};
};

} // namespace emulated_board
