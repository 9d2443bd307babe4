#include "tests/stand-ins/BoardDevice.h"

#include <array>
#include <functional>

namespace {

using namespace mesk::tests;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::int32_t timedOut = -2120;

std::int32_t plug(const EmulatedBoard& board, std::uint32_t port, const std::string& link)
{
    return board.control().plug(0, port, link.c_str(), nullptr, 0);
}

TEST(BoardSetup, refusesWhatItDoesNotUnderstandAndKeepsWhatIsThere)
{
    const std::vector<std::string> bad{"loose=1",
                                       "[Board1]\nports=1",
                                       "[Other]\na=1",
                                       "[Board0",
                                       "[Design3]\nlacks=",
                                       "[Design3.1]\nlacks=Nothing",
                                       "[Board0]\nlink0=file:/no/such.pcap,",
                                       "[Board0]\nlink0=file:,/no/such/folder.pcap",
                                       "[Board0]\ndevice=1\n[Board1]\nserial=1"};
    const std::vector<std::string> badOfBoard{"foo=1",
                                              "ports=9",
                                              "ports=x",
                                              "lineSpeed=yes",
                                              "firmware=2",
                                              "link4=none",
                                              "link0=tin:can",
                                              "link0=pair:0.9",
                                              "link0=pair:00",
                                              "actionTimeoutsPerSecond4=1",
                                              "actionTimeoutsPerSecond0=1001"};
    EmulatedBoard board;
    const std::uint64_t held = ops().init(1);
    testing::internal::CaptureStderr();
    for (const std::string& text : bad)
        EXPECT_THROW(EmulatedBoard{text + "\n"}, std::runtime_error) << text;
    for (const std::string& line : badOfBoard)
        EXPECT_THROW(EmulatedBoard{"[Board0]\n" + line + "\n"}, std::runtime_error) << line;
    EXPECT_LT(board.control().loadSetup("/no/such/file"), 0);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                AllOf(HasSubstr("[Board0] foo: unknown key"), HasSubstr("unknown link 'tin:can'")));
    EXPECT_EQ(ops().infoInt(held, "ports/gige"), 2);
}

TEST(BoardPhys, answerOverMdioAndGoThroughResets)
{
    EmulatedBoard board;
    const Device device;
    device.write("GigE_MdioPhyAddr", 2);
    EXPECT_EQ(device.mdioRead(0), 0x1140u);
    EXPECT_EQ(device.mdioRead(1) & 0x24, 0x24u) << "link up, negotiation complete";
    device.mdioWrite(29, 27);
    device.mdioWrite(30, 0x418F);
    device.mdioWrite(29, 11);
    EXPECT_EQ(device.mdioRead(30), 0u);
    device.mdioWrite(29, 27);
    EXPECT_EQ(device.mdioRead(30), 0x418Fu);
    device.mdioWrite(4, 0x55);

    EXPECT_EQ(board.control().setPhyResetReads(0, 2, 2), 0);
    device.mdioWrite(0, 0x9140);
    EXPECT_EQ(board.control().phyRegister(0, 2, 0), 0x9140);
    EXPECT_THAT((std::array{device.mdioRead(0), device.mdioRead(0), device.mdioRead(0)}),
                ElementsAre(0x9140, 0x9140, 0x1140));
    EXPECT_EQ(device.mdioRead(4), 0x01E1u) << "a reset by software forgets the registers";
    EXPECT_EQ(board.control().phyIndirect(0, 2, 27), 0x418F) << "but not the indirect ones";
    EXPECT_EQ(board.control().phyIndirect(0, 1, 27), 0) << "of another PHY";

    device.write("GigE_Reset", 0b1011);
    EXPECT_EQ(device.mdioRead(2), 0xFFFFu);
    device.write("GigE_Reset", 15);
    EXPECT_EQ(board.control().phyIndirect(0, 2, 27), 0) << "a reset by its line forgets all";
    device.write("GigE_MdioPhyAddr", 4);
    EXPECT_EQ(device.mdioRead(2), 0xFFFFu) << "there is no such PHY";
}

TEST(BoardQueues, readWaitsForAllThatIsAskedAndTakesWhatIsThereAtTheEnd)
{
    EmulatedBoard board("[Board0]\nreceiveCapacity=5\nactionCapacity=2\n");
    const Device device;
    Words words(8, 0xA5);
    EXPECT_EQ(ops().readQueue(device.handle(), 1, words.data(), 4, 0), timedOut);
    EXPECT_EQ(ops().readQueue(device.handle(), 1, words.data(), 3, 1000), 0) << "not a whole word";
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(ops().readQueue(device.handle(), 1, words.data(), 4, 50), timedOut);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(50));
    board.inject(1, {1, 2, 3});
    EXPECT_EQ(ops().readQueue(device.handle(), 1, words.data(), 10, 5000), 8);
    board.inject(1, {4, 5, 6, 7, 8, 9}); // around the end of the ring, two too many
    EXPECT_EQ(ops().lostWords(device.handle(), 1), 2);
    EXPECT_EQ(board.control().queuedWords(0, 1), 5u);
    EXPECT_EQ(ops().readQueue(device.handle(), 1, words.data(), 24, 20), 20);
    EXPECT_THAT(words, ElementsAre(3, 4, 5, 6, 7, 0xA5, 0xA5, 0xA5));
    board.inject(9, {0x10003, 1, 2});
    EXPECT_EQ(ops().lostWords(device.handle(), 9), 1);
    board.control().setLostWords(0, 9, -7);
    EXPECT_EQ(ops().lostWords(device.handle(), 9), -7);
    EXPECT_EQ(ops().clear(device.handle(), 9), 0);
    EXPECT_EQ(ops().readQueue(device.handle(), 9, words.data(), 4, 0), timedOut);
    std::thread late([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        board.inject(0, {8});
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        board.inject(0, {9});
    });
    EXPECT_EQ(ops().readQueue(device.handle(), 0, words.data(), 8, 5000), 8);
    late.join();
}

TEST(BoardTransmitter, sendsFramesToTheOtherEndOfACable)
{
    EmulatedBoard board;
    const Device device;
    EXPECT_EQ(plug(board, 0, "pair:0.2"), 0);
    device.send(frameOf(60));
    EXPECT_EQ(device.receive(2), transmission(frameOf(60), 60));
    device.send(frameOf(1518), 2);
    EXPECT_EQ(device.receive(0), transmission(frameOf(1518), 1518));
    Bytes filled = frameOf(42);
    device.send(filled);
    filled.resize(60);
    EXPECT_EQ(device.receive(2), transmission(filled, 60)) << "filled up as any sender does";

    device.write("GigeTxDisableCrcGeneration0", 1);
    Bytes withSequence = frameOf(60);
    withSequence.insert(withSequence.end(), {0xEE, 0x7F, 0xEC, 0xB0}); // of another implementation
    device.send(withSequence);
    EXPECT_EQ(device.receive(2), transmission(frameOf(60), 60));
    withSequence.back() ^= 1;
    device.send(withSequence);
    device.send(frameOf(2));
    EXPECT_TRUE(eventually([&] { return device.read("GigeRecvErrCnt2") == 2; }));
    EXPECT_EQ(counters(board, 0, 2).crcErrors, 2u);
    EXPECT_EQ(device.read("GigeRecvPktCnt2") * 100 + device.read("CtrlPktReceivedCnt2") * 10 +
                  device.read("CtrlPktSendUiqCnt2"),
              333u);
    const KivoBoardPortCounters sent = counters(board, 0, 0);
    EXPECT_EQ(sent.framesSent, 5u);
    EXPECT_EQ(sent.bytesSent, 60u + 60 + 60 + 60 + 0);
    EXPECT_EQ(counters(board, 0, 2).bytesReceived, 180u);
    EXPECT_EQ(device.receive(2, 0), Words());
}

TEST(BoardLinks, framesForWhomNobodyReadsAreLostAndCounted)
{
    for (const char* pause : {"0", "50"}) {
        EmulatedBoard board("[Board0]\nlink0=pair:0.1\nreceiveCapacity=70\npauseMs=" + std::string(pause) +
                            "\n");
        const Device device;
        for (unsigned i = 0; i < 10; ++i)
            device.send(frameOf(60, i));
        EXPECT_TRUE(eventually([&] { return counters(board, 0, 1).framesDropped == 8; }));
        EXPECT_EQ(ops().lostWords(device.handle(), 1), 8 * 31);
        EXPECT_EQ(device.read("GvspFiFoOverflow_GigeTransceiver1"), 1u);
        EXPECT_EQ(device.receive(1), transmission(frameOf(60, 0), 60)) << "whole frames are lost";
        device.send(frameOf(60, 11));
        EXPECT_EQ(device.receive(1), transmission(frameOf(60, 1), 60));
        EXPECT_EQ(device.receive(1), transmission(frameOf(60, 11), 60));
    }
}

TEST(BoardControl, tellsWhatIsHeldAndHoldsWhatItIsToldTo)
{
    EmulatedBoard board;
    const KivoBoardControl& control = board.control();
    {
        const Device device, other;
        EXPECT_EQ(board.openHandles() * 10 + board.openDesigns(), 22u);
        EXPECT_EQ(control.holdPhy(0, 2, 1) | control.freezeTransmitter(0, 1, 5), 0);
        device.write("GigE_MdioPhyAddr", 2);
        device.mdioWrite(0, 0x9140);
        for (int reads = 0; reads < 100; ++reads)
            EXPECT_EQ(device.mdioRead(0) & 0x8000, 0x8000u);
        EXPECT_EQ(device.read("GigeTxTransferActive1"), 5u);
        EXPECT_EQ(device.read("GigeTxTransferActive0"), 0u) << "of another port";
        EXPECT_EQ(control.holdPhy(0, 2, 0) | control.freezeTransmitter(0, 1, 0), 0);
        EXPECT_EQ((device.mdioRead(0) & 0x8000) | device.read("GigeTxTransferActive1"), 0u);
    }
    EXPECT_EQ(board.openHandles() + board.openDesigns(), 0u);
}

TEST(BoardScripts, answerTheCallsTheyAreFor)
{
    EmulatedBoard board;
    const KivoBoardControl& control = board.control();
    const Device device;
    EXPECT_EQ(control.script("KHalRegisterRead", 2, 2, 0, -5), 0);
    EXPECT_LT(control.script("KHalFreeDevice", 0, 1, 0, 0), 0);
    std::uint64_t value = 0;
    const std::uint32_t id = device.id("GigE_Reset");
    std::array<std::int32_t, 4> statuses{};
    for (std::int32_t& status : statuses)
        status = ops().read(device.handle(), id, &value);
    EXPECT_THAT(statuses, ElementsAre(0, -5, -5, 0));
    EXPECT_EQ(control.scriptedCalls(), 2u);
    control.clearScripts();
    EXPECT_FALSE(board.scriptFired());

    board.failCall(3);
    EXPECT_EQ(ops().count(), 2u);
    EXPECT_EQ(device.write("GigE_Reset", 3), -1) << "two calls, the second of which fails";
    EXPECT_EQ(device.read("GigE_Reset"), 15u);
    EXPECT_TRUE(board.scriptFired());
}

} // namespace
