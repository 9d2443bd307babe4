#include "interface/KivoGbePhysicalNetworkInterfaceStatics.h"
#include "interface/KivoGbePhysicalNetworkInterfaceUiqLeecherThread.h"
#include "interface/KivoGbePhysicalNetworkInterface_p.h"
#include "plugin/binding/KHal.h"
#include "support/platform/os/Clock.h"

#include <boost/format.hpp>

#include <locale>

namespace kivo::core::mesk {

namespace {

constexpr std::uint32_t deviceIndexes = 32;
constexpr std::uint32_t boardTypeMask = 0xFFFF;
constexpr std::uint8_t dumpedPhyRegisters = 29; // 29 to 31 lead elsewhere
constexpr std::uint32_t registerPauseMs = 1000; // between the two dumps, so that running counters show

/// Part of a line: a PHY register in hexadecimal and in groups of four bits.
struct PhyRegisterValue {
    std::uint16_t value;
};
LineText& operator<<(LineText& text, PhyRegisterValue phyRegister)
{
    text << (boost::format("0x%04x", std::locale::classic()) % phyRegister.value).str() << " [ ";
    for (int bit = 15; bit >= 0; --bit) {
        text << ((phyRegister.value >> bit) & 1) << (bit % 4 == 0 && bit != 0 ? "_" : "");
    }
    return text << " ] ";
}

/// What a register holds now; 0 if it can't be read.
std::uint64_t registerNow(std::uint64_t boardHandle, std::uint32_t registerId)
{
    std::uint64_t value = 0;
    plugin::KHalRegisterRead(boardHandle, registerId, &value);
    return value;
}

} // namespace

void KivoGbePhysicalNetworkInterface::finish()
{
    D& r = *d;
    if (auto* const worker = r.worker()) {
        worker->join();
    }
    const auto line = [this](const auto&... parts) {
        logPhyLine(*logger(), levelInformation, id(), parts...);
    };
    line("': Send - ", r.framesSent.get(), " frames (", r.bytesSent.get(), " bytes)");
    line("': Recv - ", r.framesReceived.get(), " frames (", r.bytesReceived.get(), " bytes)");
    line("':        ....... zerosize transmissions : ", r.zeroSizeTransmissions.get());
    line("':        ................. invalid EOTs : ", r.invalidEots.get());
    line("':        ... invalid transmission sizes : ", r.invalidTransmissionSizes.get());
    line("':        .............. UIQ read errors : ", r.uiqReadErrors.get());
    line("':        ............... UIQ lost words : ", LostWords{r.boardHandle, r.portId});

    const auto sinceOpen = [&](std::uint32_t registerId, std::uint64_t atOpen, const char* text) {
        if (registerId != 0) {
            line(text, registerNow(r.boardHandle, registerId) - atOpen);
        }
    };
    sinceOpen(r.regRecvPktCnt, r.hwPacketCountAtOpen, "':        ........ Hardware Packet Count : ");
    sinceOpen(r.regRecvErrCnt, r.hwPacketErrorsAtOpen, "':        ....... Hardware Packet Errors : ");
    sinceOpen(r.regCtrlPktReceivedCnt, r.ctrlPacketsReceivedAtOpen,
              "':        ....... Ctrl Packet Recv Count : ");
    sinceOpen(r.regCtrlPktSendUiqCnt, r.ctrlPacketsSentUiqAtOpen,
              "':        ... Ctrl Packet Send UIQ Count : ");

    const auto flags = [&](std::uint32_t registerId, RelaxedAtomic<std::uint64_t>& field, const char* text) {
        if (registerId != 0) {
            r.readInto(registerId, field);
            line(text, Hexadecimal{field});
        }
    };
    flags(r.regGvspFifoOverflow, r.gvspFifoOverflowFlags, "':        ........... GVSP FIFO overflow : ");
    flags(r.regGvcpFifoNotEmpty, r.gvcpFifoNotEmptyFlags, "':        .......... GVCP FIFO not empty : ");
}

void KivoGbePhysicalNetworkInterface::debugOutput()
{
    logDetail("' [START] DEBUG OUTPUT ...");
    logOwnDevice();
    logDevicesFound();
    logFirmwareRegisters();
    logDetail("' Waiting 1 second...");
    templates::platform::os::sleepMs(registerPauseMs);
    logFirmwareRegisters();
    logPhyRegisters();
    logDetail("' [STOP ] DEBUG OUTPUT");
}

template <typename... Parts>
void KivoGbePhysicalNetworkInterface::logDetail(const Parts&... parts)
{
    logPhyLine(*logger(), levelDetail, id(), parts...);
}

void KivoGbePhysicalNetworkInterface::logOwnDevice()
{
    logDetail("' Informations from own device handle:");
    const std::uint64_t device = d->boardHandle;
    const auto serial = static_cast<std::uint32_t>(plugin::KHalGetBoardInfoInt(device, "board/serial"));
    const auto type = static_cast<std::uint32_t>(plugin::KHalGetBoardInfoInt(device, "board/type"));
    const char* const name = plugin::KHalGetBoardInfoString(device, "board/name");
    logDetail("' [STORED  ]                 Board Index: ", d->boardId.get());
    logDetail("' [HAL     ]                Board Serial: ", Hexadecimal{serial});
    logDetail("' [HAL     ]                  Board Type: ", Hexadecimal{type & boardTypeMask});
    logDetail("' [HAL     ]                  Board Name: ", name != nullptr ? name : "");
}

void KivoGbePhysicalNetworkInterface::logDevicesFound()
{
    logDetail("' Informations from HAL:");
    const std::uint32_t count = plugin::KHalGetDeviceCount();
    logDetail("' [HAL     ]               Devices Count: ", count);
    std::uint32_t found = 0;
    bool skippedLast = false;
    for (std::uint32_t index = 0; index < deviceIndexes; ++index) {
        const std::uint64_t device = plugin::KHalGetDevice(index);
        if (device != 0) {
            ++found;
            const auto serial =
                static_cast<std::uint32_t>(plugin::KHalGetBoardInfoInt(device, "board/serial"));
            skippedLast = serial == 0;
            if (skippedLast) {
                logLine(*logger(), levelDetail, "Found device with serial '0' on device index ", index,
                        ", skipping...");
            } else {
                logDetail("' [HAL     ]               Device Found: Index ", index, ", Serial ",
                          Hexadecimal{serial});
            }
            plugin::KHalPutDevice(device);
        }
        // A device without a serial never ends the scan, not even at the empty index behind it.
        if (found == count && !skippedLast) {
            break;
        }
    }
}

void KivoGbePhysicalNetworkInterface::logFirmwareRegisters()
{
    logDetail("' Firmware Debug Registers:");
    const auto line = [this](std::uint32_t registerId, const char* text) {
        if (registerId != 0) {
            logDetail(text, registerNow(d->boardHandle, registerId));
        }
    };
    line(d->regRecvPktCnt, "' [REGISTER]      Hardware Packet Count : ");
    line(d->regRecvErrCnt, "' [REGISTER]     Hardware Packet Errors : ");
    line(d->regCtrlPktReceivedCnt, "' [REGISTER]     Ctrl Packet Recv Count : ");
    line(d->regCtrlPktSendUiqCnt, "' [REGISTER] Ctrl Packet Send UIQ Count : ");
    line(d->regGvspFifoOverflow, "' [REGISTER]         GVSP FIFO overflow : ");
    line(d->regGvcpFifoNotEmpty, "' [REGISTER]        GVCP FIFO not empty : ");
}

void KivoGbePhysicalNetworkInterface::logPhyRegisters()
{
    const D& r = *d;
    if (r.regMdioRegAddr == 0 || r.regMdioRead == 0 || r.regMdioReadData == 0) {
        return; // no reset ran for this object, so it knows no MDIO registers
    }
    logDetail("': ===============================");
    logDetail("': ====== PHY Register Dump ======");
    logDetail("': ===============================");
    auto& mdioLock = KivoGbePhysicalNetworkInterfaceStatics::instance()->mdioLock(r.boardId);
    const templates::platform::RecursiveMutexGuard mdioGuard(&mdioLock);
    for (std::uint8_t number = 0; number < dumpedPhyRegisters; ++number) {
        std::uint16_t value = 0;
        r.mdioRead(number, value);
        logDetail("': [MDIO] ...... Register ", unsigned{number}, ": ", PhyRegisterValue{value});
    }
}

} // namespace kivo::core::mesk
