#pragma once

#include <string>

/// What the hardware must see, in the form of PortFixture::journalOf.
namespace mesk::tests {

inline std::string mdioWritten(unsigned number, unsigned value)
{
    return "GigE_MdioRegAddr = " + std::to_string(number) + "\nGigE_Mdio = " + std::to_string(value) +
           "\nGigE_MdioWR = 0\nsleep 100\n";
}

inline std::string mdioRead(unsigned number)
{
    return "GigE_MdioRegAddr = " + std::to_string(number) +
           "\nGigE_MdioRD = 0\nsleep 50\nMdioReadReg ?\nsleep 50\n";
}

/// Look-ups and pulse at the start of every reset.
inline std::string resetStarted(unsigned resetLines)
{
    return "find GigE_MdioRD\nfind GigE_MdioWR\nfind GigE_Mdio\nfind GigE_MdioRegAddr\n"
           "find GigE_MdioPhyAddr\nfind MdioReadReg\nfind GigE_Reset\nGigE_Reset = " +
           std::to_string(resetLines) + "\nsleep 100\nGigE_Reset = 15\nsleep 100\n";
}

/// One PHY's part of a reset; `driver` is what indirect register 11 gets.
inline std::string phySetUp(unsigned phy, unsigned driver)
{
    return "GigE_MdioPhyAddr = " + std::to_string(phy) + "\nsleep 100\n" + mdioWritten(29, 27) +
           mdioWritten(30, 0x418F) + mdioWritten(29, 22) + mdioWritten(30, 0xA2DA) + mdioWritten(29, 11) +
           mdioRead(30) + mdioWritten(29, 11) + mdioWritten(30, driver) + mdioWritten(0, 0x9140) +
           mdioRead(0);
}

inline std::string transceiversEnabled()
{
    return "find GigE_TxStart\nfind GigE_RxEnable\nGigE_TxStart = 1\nGigE_RxEnable = 1\n"
           "find GigeTxStart0\nGigeTxStart0 = 1\nfind GigeTxStart1\nGigeTxStart1 = 1\n"
           "find GigeTxStart2\nGigeTxStart2 = 1\nfind GigeTxStart3\nGigeTxStart3 = 1\n";
}

/// The look-ups of a port, in order.
inline std::string registersResolved(const std::string& port)
{
    std::string steps;
    for (const char* name :
         {"GigeBufferReset", "GigeWriteData", "GigeWriteComplete", "GigeTxDisableCrcGeneration",
          "GigeTxTransferActive", "GigeRecvPktCnt", "GigeRecvErrCnt", "CtrlPktReceivedCnt",
          "CtrlPktSendUiqCnt", "GvspFiFoOverflow_GigeTransceiver", "GvcpFiFoNotEmpty_GigeTransceiver"}) {
        steps += "find " + (name + port) + "\n";
    }
    return steps;
}

/// A whole `open` on board 0; `reset` is what its reset does.
inline std::string opening(const std::string& port, const std::string& version = "2, 0",
                           const std::string& reset = "", bool crcControl = true, bool counters = true,
                           const std::string& warning = "")
{
    return "3 'p': Selecting kivo board 0 port " + port +
           "\nInitDevice(0)\nGetBoardInfoString(board/caminterface)\nGetBoardInfoInt(ports/gige)\n"
           "GetBoardInfoInt(firmware/major)\nGetBoardInfoInt(firmware/minor)\nFirmwareTrampoline(" +
           version + ")\nConfigureFpga()\n" + reset + registersResolved(port) + "find ActionCmdConfigData" +
           port + "\n" + (crcControl ? "GigeTxDisableCrcGeneration" + port + " = 0\n" : "") +
           (counters ? "GigeRecvPktCnt" + port + " ?\nGigeRecvErrCnt" + port + " ?\nCtrlPktReceivedCnt" +
                           port + " ?\nCtrlPktSendUiqCnt" + port + " ?\nGvspFiFoOverflow_GigeTransceiver" +
                           port + " ?\nGvcpFiFoNotEmpty_GigeTransceiver" + port + " ?\n"
                     : "") +
           warning + "DataQueueClear(" + port + ")\nDataQueueClear(" + std::to_string(std::stoi(port) + 8) +
           ")\n3 'p': Selected device successfully opened.\n";
}

} // namespace mesk::tests
