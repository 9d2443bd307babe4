#include "interface/KivoGbePhysicalNetworkInterfaceUiqLeecherThread.h"
#include "interface/KivoGbePhysicalNetworkInterface_p.h"
#include "plugin/binding/Dov.h"
#include "plugin/binding/KHal.h"
#include "support/platform/os/Environment.h"

#include <array>
#include <charconv>
#include <cstring>
#include <optional>

namespace kivo::core::mesk {

namespace {

constexpr std::size_t registerNameMaxBytes = 64;

/// An unsigned decimal number behind leading blanks; what follows it doesn't matter.
std::optional<std::uint32_t> leadingNumber(const std::string& text)
{
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    std::uint32_t number = 0;
    if (start == std::string::npos ||
        std::from_chars(text.data() + start, text.data() + text.size(), number).ec != std::errc()) {
        return std::nullopt;
    }
    return number;
}

std::optional<std::uint32_t> preSendWaitSetting()
{
    const auto text = templates::platform::os::environmentVariable("KIVO_PRE_SEND_WAIT_TIME");
    return text ? leadingNumber(*text) : std::nullopt;
}

} // namespace

bool KivoGbePhysicalNetworkInterface::D::initDevice(const std::string& id)
{
    const DeviceGate::Change change(deviceGate);
    freeDevice();
    boardHandle = plugin::KHalInitDevice(boardId);
    if (boardHandle == 0) {
        logPhyLine(cachedLogger(), levelError, id, "': Error in KHalInitDevice(...) for board id '",
                   boardId.get(), "'");
        return false;
    }
    if ((firmwareDesign != 0 || findDesign(id)) && loadDesign(id)) {
        return true;
    }
    freeDevice();
    return false;
}

bool KivoGbePhysicalNetworkInterface::D::findDesign(const std::string& id)
{
    const char* const cameraInterface = plugin::KHalGetBoardInfoString(boardHandle, "board/caminterface");
    if (cameraInterface == nullptr || std::strcmp(cameraInterface, "GigE") != 0) {
        logPhyLine(cachedLogger(), levelError, id, "': No GigE interface available for board id '",
                   boardId.get(), "'");
        return false;
    }
    const std::int32_t ports = plugin::KHalGetBoardInfoInt(boardHandle, "ports/gige");
    if (portId >= static_cast<std::uint32_t>(ports)) {
        logPhyLine(cachedLogger(), levelError, id, "': Port id '", portId.get(),
                   "' not available for board id '", boardId.get(), "'");
        return false;
    }
    const std::int32_t versionMajor = plugin::KHalGetBoardInfoInt(boardHandle, "firmware/major");
    const std::int32_t versionMinor = plugin::KHalGetBoardInfoInt(boardHandle, "firmware/minor");
    firmwareDesign = plugin::DovFirmwareTrampoline(static_cast<std::uint8_t>(versionMajor & 0xFF),
                                                   static_cast<std::uint8_t>(versionMinor & 0xFF));
    if (firmwareDesign == 0) {
        logPhyLine(cachedLogger(), levelError, id, "': Error in DovFirmwareTrampoline(...)");
        return false;
    }
    return true;
}

bool KivoGbePhysicalNetworkInterface::D::loadDesign(const std::string& id)
{
    const std::int32_t result = plugin::KHalConfigureFpga(boardHandle, firmwareDesign);
    if (result == 0) {
        return true;
    }
    logPhyLine(cachedLogger(), levelError, id, "': Error in KHalConfigureFpga(...) for board id '",
               boardId.get(), "' (result = ", result, ")");
    plugin::DovUnloadDovFile(firmwareDesign);
    firmwareDesign = 0;
    return false;
}

void KivoGbePhysicalNetworkInterface::D::freeDevice()
{
    if (boardHandle != 0) {
        plugin::KHalFreeDevice(boardHandle);
        boardHandle = 0;
    }
}

std::uint32_t KivoGbePhysicalNetworkInterface::D::resolvePortRegister(const char* baseName,
                                                                      std::uint32_t port) const
{
    std::array<char, registerNameMaxBytes> name{};
    char* const lastByte = name.data() + name.size() - 1;
    char* end = name.data();
    while (*baseName != '\0' && end != lastByte) {
        *end++ = *baseName++;
    }
    std::to_chars(end, lastByte, port);
    return plugin::DovGetRegisterByName(firmwareDesign, name.data());
}

void KivoGbePhysicalNetworkInterface::D::resolveRegisters()
{
    regBufferReset = resolvePortRegister("GigeBufferReset", portId);
    regWriteData = resolvePortRegister("GigeWriteData", portId);
    regWriteComplete = resolvePortRegister("GigeWriteComplete", portId);
    regTxDisableCrcGeneration = resolvePortRegister("GigeTxDisableCrcGeneration", portId);
    regTxTransferActive = resolvePortRegister("GigeTxTransferActive", portId);
    regRecvPktCnt = resolvePortRegister("GigeRecvPktCnt", portId);
    regRecvErrCnt = resolvePortRegister("GigeRecvErrCnt", portId);
    regCtrlPktReceivedCnt = resolvePortRegister("CtrlPktReceivedCnt", portId);
    regCtrlPktSendUiqCnt = resolvePortRegister("CtrlPktSendUiqCnt", portId);
    regGvspFifoOverflow = resolvePortRegister("GvspFiFoOverflow_GigeTransceiver", portId);
    regGvcpFifoNotEmpty = resolvePortRegister("GvcpFiFoNotEmpty_GigeTransceiver", portId);
}

void KivoGbePhysicalNetworkInterface::D::readInto(std::uint32_t registerId,
                                                  RelaxedAtomic<std::uint64_t>& field) const
{
    if (registerId != 0) {
        std::uint64_t value = field;
        plugin::KHalRegisterRead(boardHandle, registerId, &value);
        field = value;
    }
}

void KivoGbePhysicalNetworkInterface::D::writeRegister(std::uint32_t registerId, std::uint64_t value) const
{
    plugin::KHalRegisterWrite(boardHandle, registerId, value);
}

void KivoGbePhysicalNetworkInterface::D::takeStartValues()
{
    readInto(regRecvPktCnt, hwPacketCountAtOpen);
    readInto(regRecvErrCnt, hwPacketErrorsAtOpen);
    hwPacketErrorsSeen = hwPacketErrorsAtOpen.get();
    readInto(regCtrlPktReceivedCnt, ctrlPacketsReceivedAtOpen);
    readInto(regCtrlPktSendUiqCnt, ctrlPacketsSentUiqAtOpen);
    readInto(regGvspFifoOverflow, gvspFifoOverflowFlags);
    readInto(regGvcpFifoNotEmpty, gvcpFifoNotEmptyFlags);
}

bool KivoGbePhysicalNetworkInterface::open()
{
    D& r = *d;
    logPhyLine(*logger(), levelInformation, id(), "': Selecting kivo board ", r.boardId.get(), " port ",
               r.portId.get());
    if (!r.initDevice(id())) {
        return false;
    }
    if (r.resetBoard) {
        r.resetGigeHardware(allPortsMask, false);
    }
    r.resolveRegisters();
    r.actionCommandsPresent = r.resolvePortRegister("ActionCmdConfigData", r.portId) != 0;
    if (r.actionCommandsPresent && r.leecherThread == nullptr) {
        using Thread = KivoGbePhysicalNetworkInterfaceUiqLeecherThread;
        r.leecherThread = new Thread(this, static_cast<int>(r.boardId.get()),
                                     static_cast<int>(r.portId.get()), Thread::actionTimeouts);
    }
    if (r.regTxDisableCrcGeneration != 0) {
        r.writeRegister(r.regTxDisableCrcGeneration, 0);
    }
    r.takeStartValues();
    warnOfFilledFifos();
    plugin::KHalDataQueueClear(r.boardHandle, r.portId);
    plugin::KHalDataQueueClear(r.boardHandle, r.portId + actionTimeoutQueueOffset);
    takePreSendWait();
    logPhyLine(*logger(), levelInformation, id(), "': Selected device successfully opened.");
    return true;
}

void KivoGbePhysicalNetworkInterface::warnOfFilledFifos()
{
    const std::uint64_t overflow = d->gvspFifoOverflowFlags;
    const std::uint64_t notEmpty = d->gvcpFifoNotEmptyFlags;
    if (overflow == 0 && notEmpty == 0) {
        return;
    }
    logPhyLine(*logger(), levelWarning, id(), "': Firmware fifo debug registers not empty: ");
    logPhyLine(*logger(), levelWarning, id(),
               "':          ........... GVSP FIFO overflow: ", Hexadecimal{overflow});
    logPhyLine(*logger(), levelWarning, id(),
               "':          .......... GVCP FIFO not empty: ", Hexadecimal{notEmpty});
}

void KivoGbePhysicalNetworkInterface::takePreSendWait()
{
    const auto waitMs = preSendWaitSetting();
    if (!waitMs) {
        return;
    }
    d->preSendWaitMs = *waitMs;
    if (*waitMs != 0) {
        logPhyLine(*logger(), levelInformation, id(), "': Using a pre-send waiting time of ", *waitMs,
                   " milliseconds.");
    }
}

bool KivoGbePhysicalNetworkInterface::reinitialize(std::uint32_t mode)
{
    constexpr std::uint32_t release = 0;
    constexpr std::uint32_t takeBack = 1;
    D& r = *d;
    if (mode == release) {
        {
            const DeviceGate::Change change(r.deviceGate);
            r.freeDevice();
        }
        logPhyLine(*logger(), levelDetail, id(), "': Device successfully deinitialized.");
    } else if (mode == takeBack) {
        if (!r.initDevice(id())) {
            logPhyLine(*logger(), levelError, id(), "': Device reinitialization failed.");
            return false;
        }
        plugin::KHalDataQueueClear(r.boardHandle, r.portId);
        r.resolveRegisters();
        logPhyLine(*logger(), levelDetail, id(), "': Device successfully reinitialized.");
    }
    return true;
}

} // namespace kivo::core::mesk
