#include "tests/interface/ExpectedSteps.h"
#include "tests/interface/PortFixture.h"

using mesk::tests::ScopedVariable;
using mesk::tests::TestClock;
using testing::HasSubstr;

class PhyReset : public mesk::tests::PortFixture {};

TEST_F(PhyReset, onePortsPhyAloneWhateverTheBoardsState)
{
    const auto port = openPort(2, true);
    const auto before = TestClock::sleptMs();
    const unsigned driver = board.control().phyIndirect(0, 2, 11);
    EXPECT_EQ(journalOf([&] { port->resetPhy(); }), mesk::tests::resetStarted(0b1011) +
                                                        "3 Resetting GigE PHY 2 on board 0 ... \n" +
                                                        mesk::tests::phySetUp(2, driver));
    EXPECT_EQ(TestClock::sleptMs() - before, 1300U);
    EXPECT_EQ(board.control().phyIndirect(0, 2, 22), 0xA2DA);

    port->requestStop(); // no board counts as reset any more, and one PHY's reset doesn't change that
    port->resetPhy();
    EXPECT_THAT(journalOf([&] { openPort(1, true); }), HasSubstr("Resetting GigE hardware on board 0 ... "));
}

TEST_F(PhyReset, driverClassFollowsTheMaskBothWays)
{
    for (const unsigned mask : {5U, 0U, 0xFU, 0xAU}) {
        const ScopedVariable variable("KIVO_GIGE_DRIVER_CLASS_PORT_MASK", std::to_string(mask).c_str());
        openPort(0, true)->requestStop();
        for (unsigned phy = 0; phy < 4; ++phy) {
            EXPECT_EQ(board.control().phyIndirect(0, phy, 11) >> 15, (mask >> phy) & 1) << mask << ' ' << phy;
        }
    }
}

TEST_F(PhyReset, waitsForThePhyButForFiftyReadsAtMost)
{
    board.control().setPhyResetReads(0, 3, 7);
    board.control().holdPhy(0, 1, 1);
    EXPECT_THAT(
        journalOf([&] { openPort(0, true); }),
        HasSubstr("MdioReadReg ?\nsleep 50\n4 GigE PHY 1 on board 0: reset not finished after 50 reads\n"
                  "GigE_MdioPhyAddr = 2\n"));
    EXPECT_EQ(TestClock::sleptMs(), 4600U + 49 * 100 + 7 * 100);
    EXPECT_EQ(log.texts(4).size(), 1U);
}

TEST_F(PhyReset, failedReadKeepsTheValueThatWasWritten)
{
    const auto port = openPort(0);
    const auto sleptMs = [&] {
        board.control().script("KHalRegisterRead", 1, 0, 1, 0);
        const auto before = TestClock::sleptMs();
        port->resetPhy();
        return TestClock::sleptMs() - before;
    };
    EXPECT_EQ(sleptMs(), 1300U) << "bit 15 was written clear, so the PHY counts as ready";
    EXPECT_EQ(board.control().phyIndirect(0, 0, 11), 0);
    const ScopedVariable variable("KIVO_GIGE_DRIVER_CLASS_PORT_MASK", "1");
    EXPECT_EQ(sleptMs(), 1300U + 49 * 100);
    EXPECT_EQ(board.control().phyIndirect(0, 0, 11), 0x8000);
}
