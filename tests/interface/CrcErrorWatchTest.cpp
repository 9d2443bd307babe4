#include "tests/interface/PortFixture.h"

// The variable is read once per process, so this is a program of its own that runs with it set.
class CrcErrorWatch : public mesk::tests::PortFixture {};

TEST_F(CrcErrorWatch, tellsEachChangeOfTheCounter)
{
    const auto set = [this](unsigned errors) {
        board.control().setRegisterValue(0, "GigeRecvErrCnt0", errors);
    };
    set(40);
    const auto port = openPort(0);
    board.control().script("KHalDataQueueReadBufferLong", 1, 0, 0, -2120);
    const auto steps = [&] { return journalOf([&] { port->receiveFrame(nullptr); }); };
    const std::string counterRead = "GigeRecvErrCnt0 ?\n";
    const std::string queueRead = "DataQueueReadBufferLong(0, 4, 100)\n";
    EXPECT_EQ(steps(), counterRead + queueRead);
    set(42);
    EXPECT_EQ(steps(), counterRead + "4 'p': Detected 2 new CRC packet errors\n" + queueRead);
    set(39);
    EXPECT_EQ(steps(), counterRead + "4 'p': Detected -3 new CRC packet errors\n" + queueRead);
    board.control().script("KHalRegisterRead", 1, 1, 1, 0);
    EXPECT_EQ(steps(), counterRead + queueRead) << "a failed read tells nothing";
    setFirmware(2, 2);
    const auto without = openPort(0);
    EXPECT_EQ(journalOf([&] { without->receiveFrame(nullptr); }), queueRead);
}
