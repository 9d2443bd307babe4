#include "stand-ins/board/RegisterFile.h"

namespace emulated_board {

namespace {

struct Entry {
    std::string_view name;
    std::uint64_t powerOn;
};

// In the order of Register. All PHYs run and both directions are on at power-on.
constexpr std::array<Entry, registerCount> entries{{
    {"GigeBufferReset", 0},
    {"GigeWriteData", 0},
    {"GigeWriteComplete", 0},
    {"GigeTxDisableCrcGeneration", 0},
    {"GigeTxTransferActive", 0},
    {"GigeRecvPktCnt", 0},
    {"GigeRecvErrCnt", 0},
    {"CtrlPktReceivedCnt", 0},
    {"CtrlPktSendUiqCnt", 0},
    {"GvspFiFoOverflow_GigeTransceiver", 0},
    {"GvcpFiFoNotEmpty_GigeTransceiver", 0},
    {"ActionCmdConfigData", 0},
    {"GigeTxStart", 1},
    {"GigE_MdioRD", 0},
    {"GigE_MdioWR", 0},
    {"GigE_Mdio", 0},
    {"GigE_MdioRegAddr", 0},
    {"GigE_MdioPhyAddr", 0},
    {"MdioReadReg", 0},
    {"GigE_Reset", 15},
    {"GigE_TxStart", 1},
    {"GigE_RxEnable", 1},
}};
static_assert(std::size_t(Register::rxEnable) + 1 == registerCount);

} // namespace

std::optional<Register> registerOfBaseName(std::string_view name)
{
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].name == name)
            return Register(i);
    }
    return std::nullopt;
}

std::optional<RegisterAddress> registerOfName(std::string_view name)
{
    std::uint32_t port = 0;
    bool numbered = false;
    if (!name.empty() && name.back() >= '0' && name.back() < char('0' + portsMax)) {
        port = std::uint32_t(name.back() - '0');
        numbered = true;
        name.remove_suffix(1);
    }
    const auto which = registerOfBaseName(name);
    if (!which || isPerPort(*which) != numbered)
        return std::nullopt;
    return RegisterAddress{*which, port};
}

std::uint32_t registerId(RegisterAddress address)
{
    return firstRegisterId + std::uint32_t(address.which) * portsMax + address.port;
}

std::string registerName(RegisterAddress address)
{
    std::string name(entries[std::size_t(address.which)].name);
    return isPerPort(address.which) ? name.append(std::to_string(address.port)) : name;
}

void RegisterFile::powerOn()
{
    for (std::size_t i = 0; i < registerCount; ++i) {
        for (auto& value : m_values[i])
            value.store(entries[i].powerOn, std::memory_order_relaxed);
    }
}

} // namespace emulated_board
