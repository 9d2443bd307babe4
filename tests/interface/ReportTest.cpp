#include "packets/EthernetFrame.h"
#include "tests/interface/ExpectedSteps.h"
#include "tests/interface/PortFixture.h"

#include <boost/make_shared.hpp>

class Report : public mesk::tests::PortFixture {
protected:
    /// Compares what an action leaves with a text, and with what remains of the text with its lines off.
    template <typename Action>
    void expectJournal(const std::string& text, unsigned levelOff, const Action& action)
    {
        EXPECT_EQ(journalOf(action), text);
        log.setLevel(levelOff);
        const std::regex lines("(DataQueueGetNrOfLostWords.*\n)?[23] .*\n");
        EXPECT_EQ(journalOf(action), std::regex_replace(text, lines, ""));
        log.setLevel(2);
    }
    void setRegister(const char* name, std::uint64_t value)
    {
        board.control().setRegisterValue(0, name, value);
    }
};

TEST_F(Report, statisticsOfTheWholeLifeAndTheFirmwaresSinceOpen)
{
    setRegister("GigeRecvPktCnt1", 10);
    setRegister("GigeRecvErrCnt1", 5);
    const std::string own = R"(3 'p': Send - 1 frames (64 bytes)
3 'p': Recv - 0 frames (0 bytes)
3 'p':        ....... zerosize transmissions : 1
3 'p':        ................. invalid EOTs : 0
3 'p':        ... invalid transmission sizes : 0
3 'p':        .............. UIQ read errors : 0
DataQueueGetNrOfLostWords(1)
3 'p':        ............... UIQ lost words : -3
)";
    const std::string firmwares = R"(GigeRecvPktCnt1 ?
3 'p':        ........ Hardware Packet Count : 0
GigeRecvErrCnt1 ?
3 'p':        ....... Hardware Packet Errors : 18446744073709551614
CtrlPktReceivedCnt1 ?
3 'p':        ....... Ctrl Packet Recv Count : 7
CtrlPktSendUiqCnt1 ?
3 'p':        ... Ctrl Packet Send UIQ Count : 0
GvspFiFoOverflow_GigeTransceiver1 ?
3 'p':        ........... GVSP FIFO overflow : 0xabc
GvcpFiFoNotEmpty_GigeTransceiver1 ?
3 'p':        .......... GVCP FIFO not empty : 0
)";
    for (const int design : {2, 0}) {
        setFirmware(2, design);
        const auto port = openPort(1);
        port->sendFrame(boost::make_shared<EthernetFrame>(QByteArray(60, 'x')));
        board.inject(1, {0});
        port->receiveFrame(nullptr);
        EXPECT_TRUE(port->reinitialize(0) && port->reinitialize(1)) << "changes no counter";
        board.control().setLostWords(0, 1, -3);
        setRegister("GigeRecvErrCnt1", 3);
        setRegister("CtrlPktReceivedCnt1", 7);
        setRegister("GvspFiFoOverflow_GigeTransceiver1", 0xABC);
        expectJournal(own + (design == 0 ? firmwares : ""), 4, [&] { port->finish(); });
        setRegister("GigeRecvErrCnt1", 5);
        setRegister("CtrlPktReceivedCnt1", 0);
    }
}

TEST_F(Report, debugOutputHasAllOfBoardFirmwareAndPhy)
{
    const mesk::tests::EmulatedBoard anew("[Board0]\ntype=0x1AB10\n[Board1]\ndevice=5\nserial=0\n");
    board.control().setInfoString(0, "board/name", nullptr);
    setRegister("GigeRecvPktCnt0", 10);
    const std::string start = R"(2 'p' [START] DEBUG OUTPUT ...
2 'p' Informations from own device handle:
GetBoardInfoInt(board/serial)
GetBoardInfoInt(board/type)
GetBoardInfoString(board/name)
2 'p' [STORED  ]                 Board Index: 0
2 'p' [HAL     ]                Board Serial: 0x4b0001
2 'p' [HAL     ]                  Board Type: 0xab10
2 'p' [HAL     ]                  Board Name: 
2 'p' Informations from HAL:
GetDeviceCount()
2 'p' [HAL     ]               Devices Count: 2
GetDevice(0)
GetBoardInfoInt(board/serial)
2 'p' [HAL     ]               Device Found: Index 0, Serial 0x4b0001
PutDevice()
GetDevice(1)
GetDevice(2)
GetDevice(3)
GetDevice(4)
GetDevice(5)
GetBoardInfoInt(board/serial)
)";
    std::string toTheEnd = "2 Found device with serial '0' on device index 5, skipping...\nPutDevice()\n";
    for (unsigned index = 6; index < 32; ++index) {
        toTheEnd += "GetDevice(" + std::to_string(index) + ")\n";
    }
    const std::string heading = "2 'p' Firmware Debug Registers:\n";
    const std::string registers = heading + R"(GigeRecvPktCnt0 ?
2 'p' [REGISTER]      Hardware Packet Count : 10
GigeRecvErrCnt0 ?
2 'p' [REGISTER]     Hardware Packet Errors : 0
CtrlPktReceivedCnt0 ?
2 'p' [REGISTER]     Ctrl Packet Recv Count : 0
CtrlPktSendUiqCnt0 ?
2 'p' [REGISTER] Ctrl Packet Send UIQ Count : 0
GvspFiFoOverflow_GigeTransceiver0 ?
2 'p' [REGISTER]         GVSP FIFO overflow : 0
GvcpFiFoNotEmpty_GigeTransceiver0 ?
2 'p' [REGISTER]        GVCP FIFO not empty : 0
)";
    const std::string wait = "2 'p' Waiting 1 second...\nsleep 1000\n";
    const std::string stop = "2 'p' [STOP ] DEBUG OUTPUT\n";
    const auto port = openPort(0, true);
    std::string phy = "2 'p': ===============================\n2 'p': ====== PHY Register Dump ======\n"
                      "2 'p': ===============================\n";
    for (unsigned n = 0; n < 29; ++n) {
        board.control().setPhyRegister(0, 3, n, n == 2 ? 0x796D : 0);
        phy += mesk::tests::mdioRead(n) + "2 'p': [MDIO] ...... Register " + std::to_string(n) +
               (n == 2 ? ": 0x796d [ 0111_1001_0110_1101 ] \n" : ": 0x0000 [ 0000_0000_0000_0000 ] \n");
    }
    expectJournal(start + toTheEnd + registers + wait + registers + phy + stop, 3,
                  [&] { port->debugOutput(); });

    board.control().setInfoInt(1, "board/serial", 0x55);
    board.control().setInfoString(0, "board/name", "a board");
    setFirmware(2, 2);
    const auto bare = openPort(0);
    const std::string found =
        "2 'p' [HAL     ]               Device Found: Index 5, Serial 0x55\nPutDevice()\n";
    const auto named = std::regex_replace(start, std::regex("Name: "), "Name: a board");
    expectJournal(named + found + heading + wait + heading + stop, 3, [&] { bare->debugOutput(); });
}

TEST_F(Report, failedReadsKeepWhatEachLineStartsWith)
{
    setRegister("GigeRecvPktCnt0", 10);
    setRegister("GvspFiFoOverflow_GigeTransceiver0", 0xABC);
    const auto port = openPort(0, true);
    board.control().setPhyRegister(0, 3, 0, 0x1234);
    board.control().script("KHalRegisterRead", 1, 0, 1, 0);
    port->finish();
    const auto lines = log.texts(3);
    EXPECT_THAT(
        lines, testing::Contains("PHY Id 'p':        ........ Hardware Packet Count : 18446744073709551606"));
    EXPECT_THAT(lines, testing::Contains("PHY Id 'p':        ........... GVSP FIFO overflow : 0xabc"));
    port->debugOutput();
    EXPECT_THAT(log.texts(2),
                testing::Contains("PHY Id 'p': [MDIO] ...... Register 0: 0x0000 [ 0000_0000_0000_0000 ] "));
}
