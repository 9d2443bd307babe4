#include "interface/KivoGbePhysicalNetworkInterfaceStatics.h"
#include "interface/KivoGbePhysicalNetworkInterface_p.h"
#include "plugin/binding/Dov.h"
#include "plugin/binding/KHal.h"
#include "support/config/TweakProperties.h"
#include "support/platform/os/Clock.h"

namespace kivo::core::mesk {

using templates::platform::os::sleepMs;

namespace {

// The MDIO engine has no busy flag: fixed waits stand in for one.
constexpr std::uint32_t mdioWriteSettleMs = 100;
constexpr std::uint32_t mdioReadSettleMs = 50;
constexpr std::uint32_t phySelectSettleMs = 100;
constexpr std::uint32_t resetPulseMs = 100;
constexpr std::uint32_t resetRecoveryMs = 100;

constexpr unsigned phyResetReadsMax = 50; // of 100 ms each

constexpr std::uint8_t phyControl = 0;            // IEEE 802.3 clause 22
constexpr std::uint16_t phyControlReset = 0x8000; // the PHY clears it when it is done
constexpr std::uint16_t phyControlResetAutoNegotiate1000 = 0x9140;
constexpr std::uint8_t phyIndirectSelector = 29;
constexpr std::uint8_t phyIndirectData = 30;

constexpr std::uint16_t indirectDriver = 11; // bit 15 selects the driver class
constexpr std::uint16_t driverClassBit = 0x8000;

struct IndirectSetting {
    std::uint16_t selector;
    std::uint16_t value;
};
constexpr IndirectSetting fixedSettings[] = {{27, 0x418F}, {22, 0xA2DA}};

bool hasBit(std::uint32_t mask, std::uint32_t bit)
{
    return ((mask >> bit) & 1U) != 0;
}

} // namespace

void KivoGbePhysicalNetworkInterface::D::mdioWrite(std::uint8_t phyRegister, std::uint16_t value) const
{
    writeRegister(regMdioRegAddr, phyRegister);
    writeRegister(regMdioData, value);
    writeRegister(regMdioWrite, 0);
    sleepMs(mdioWriteSettleMs);
}

void KivoGbePhysicalNetworkInterface::D::mdioRead(std::uint8_t phyRegister, std::uint16_t& value) const
{
    writeRegister(regMdioRegAddr, phyRegister);
    writeRegister(regMdioRead, 0);
    sleepMs(mdioReadSettleMs);
    std::uint64_t read = 0;
    if (plugin::KHalRegisterRead(boardHandle, regMdioReadData, &read) == 0) {
        value = static_cast<std::uint16_t>(read & 0xFFFF);
    }
    sleepMs(mdioReadSettleMs);
}

void KivoGbePhysicalNetworkInterface::D::resetGigeHardware(std::uint32_t portMask, bool phyOnly)
{
    const auto driverClassMask = static_cast<std::uint32_t>(
        templates::platform::readTweakProperty<std::int32_t>("GIGE::DriverClassPortMask", 0, nullptr));
    auto& statics = *KivoGbePhysicalNetworkInterfaceStatics::instance();
    const templates::platform::RecursiveMutexGuard mdioGuard(&statics.mdioLock(boardId));
    if (!phyOnly) {
        if (statics.isBoardReset(boardId)) {
            return;
        }
        logLine(cachedLogger(), levelInformation, "Resetting GigE hardware on board ", boardId.get(),
                " ... ");
    }
    resolveResetRegisters();
    pulsePhyReset(portMask);
    for (std::uint32_t phy = 0; phy < portsOfBoard; ++phy) {
        if (!hasBit(portMask, phy)) {
            continue;
        }
        if (phyOnly) {
            logLine(cachedLogger(), levelInformation, "Resetting GigE PHY ", phy, " on board ", boardId.get(),
                    " ... ");
        }
        if (!configurePhy(phy, hasBit(driverClassMask, phy))) {
            logLine(cachedLogger(), levelWarning, "GigE PHY ", phy, " on board ", boardId.get(),
                    ": reset not finished after ", phyResetReadsMax, " reads");
        }
    }
    if (!phyOnly) {
        enableTransceivers();
        statics.addResetBoard(boardId);
    }
}

void KivoGbePhysicalNetworkInterface::D::resolveResetRegisters()
{
    regMdioRead = plugin::DovGetRegisterByName(firmwareDesign, "GigE_MdioRD");
    regMdioWrite = plugin::DovGetRegisterByName(firmwareDesign, "GigE_MdioWR");
    regMdioData = plugin::DovGetRegisterByName(firmwareDesign, "GigE_Mdio");
    regMdioRegAddr = plugin::DovGetRegisterByName(firmwareDesign, "GigE_MdioRegAddr");
    regMdioPhyAddr = plugin::DovGetRegisterByName(firmwareDesign, "GigE_MdioPhyAddr");
    regMdioReadData = plugin::DovGetRegisterByName(firmwareDesign, "MdioReadReg");
    regGigeReset = plugin::DovGetRegisterByName(firmwareDesign, "GigE_Reset");
}

void KivoGbePhysicalNetworkInterface::D::pulsePhyReset(std::uint32_t portMask) const
{
    // One line per PHY, low for reset: the other PHYs keep running.
    writeRegister(regGigeReset, ~portMask & allPortsMask);
    sleepMs(resetPulseMs);
    writeRegister(regGigeReset, allPortsMask);
    sleepMs(resetRecoveryMs);
}

bool KivoGbePhysicalNetworkInterface::D::configurePhy(std::uint32_t phy, bool driverClass) const
{
    writeRegister(regMdioPhyAddr, phy);
    sleepMs(phySelectSettleMs);
    for (const auto& setting : fixedSettings) {
        mdioWrite(phyIndirectSelector, setting.selector);
        mdioWrite(phyIndirectData, setting.value);
    }
    std::uint16_t value = 0;
    mdioWrite(phyIndirectSelector, indirectDriver);
    mdioRead(phyIndirectData, value);
    value = static_cast<std::uint16_t>(driverClass ? value | driverClassBit : value & ~driverClassBit);
    mdioWrite(phyIndirectSelector, indirectDriver);
    mdioWrite(phyIndirectData, value);

    mdioWrite(phyControl, phyControlResetAutoNegotiate1000);
    for (unsigned reads = 0; reads < phyResetReadsMax; ++reads) {
        mdioRead(phyControl, value);
        if ((value & phyControlReset) == 0) {
            return true;
        }
    }
    return false;
}

void KivoGbePhysicalNetworkInterface::D::enableTransceivers() const
{
    const std::uint32_t regTxStart = plugin::DovGetRegisterByName(firmwareDesign, "GigE_TxStart");
    const std::uint32_t regRxEnable = plugin::DovGetRegisterByName(firmwareDesign, "GigE_RxEnable");
    writeRegister(regTxStart, 1);
    writeRegister(regRxEnable, 1);
    for (std::uint32_t port = 0; port < portsOfBoard; ++port) {
        writeRegister(resolvePortRegister("GigeTxStart", port), 1);
    }
}

void KivoGbePhysicalNetworkInterface::resetPhy()
{
    const std::uint32_t port = d->portId;
    d->resetGigeHardware(port < portsOfBoard ? 1U << port : 0, true);
}

} // namespace kivo::core::mesk
