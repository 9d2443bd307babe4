#include "packets/EthernetFrame.h"
#include "packets/IPv4Packet.h"
#include "packets/IpAddress.h"
#include "tests/interface/PortFixture.h"

#include <boost/make_shared.hpp>

#include <numeric>

using mesk::tests::TestClock;
using mesk::tests::TestEventLog;
using testing::ElementsAre;

namespace {

/// Bytes that all differ from their neighbours.
QByteArray bytesOf(int size)
{
    QByteArray bytes(size, '\0');
    std::iota(bytes.begin(), bytes.end(), static_cast<char>(1));
    return bytes;
}

boost::shared_ptr<EthernetFrame> frameOf(int size)
{
    return boost::make_shared<EthernetFrame>(bytesOf(size));
}

/// What a frame of these bytes does to the board.
std::string sending(const QByteArray& bytes)
{
    std::string steps = "GigeBufferReset0 = 0\n";
    for (int i = 0; i + 1 < bytes.size(); i += 2) {
        const unsigned word = static_cast<quint8>(bytes[i]) + 256U * static_cast<quint8>(bytes[i + 1]);
        steps += "GigeWriteData0 = " + std::to_string(word) + "\n";
    }
    return steps + "GigeWriteComplete0 = 0\n";
}

const std::string busyRead = "GigeTxTransferActive0 ?\n";

} // namespace

class FrameSend : public mesk::tests::PortFixture {
protected:
    std::string stepsOf(mesk::tests::Interface& port, const boost::shared_ptr<EthernetFrame>& frame)
    {
        return journalOf([&] { port.sendFrame(frame); });
    }
};

TEST_F(FrameSend, writesWholeWordsUpToTheLimitAndZerosForAMissingEnd)
{
    const auto port = openPort(0);
    for (const int size : {60, 61, 1517, 1518}) {
        EXPECT_EQ(stepsOf(*port, frameOf(size)), busyRead + sending(bytesOf(size)));
    }
    for (const int size : {14, 15, 58, 59}) {
        EXPECT_EQ(stepsOf(*port, frameOf(size)), busyRead + sending(bytesOf(size).leftJustified(60, '\0')));
    }
    EXPECT_EQ(stepsOf(*port, frameOf(13)), busyRead + sending(QByteArray(60, '\0')));
    EXPECT_EQ(stepsOf(*port, frameOf(1519)),
              "4 'p': Packet is too large (packet size: 1519, allowed size: 1518)\n");
    EXPECT_THAT(mesk::tests::TestEventLog::records(), testing::IsEmpty());
    EXPECT_THAT(counters(*port), ElementsAre(9, 60 + 61 + 1517 + 1518 + 5 * 60 + 9 * 4, 0, 0, 0, 0, 0, 0));

    setFirmware(1, 0);
    const auto withoutBusyRegister = openPort(0);
    EXPECT_EQ(stepsOf(*withoutBusyRegister, frameOf(60)), sending(bytesOf(60)));
}

TEST_F(FrameSend, crcIsAppendedOnceWhereTheHardwareMakesNone)
{
    const auto port = openPort(0);
    const auto raw = frameOf(60);
    port->sendFrame(raw);
    EXPECT_EQ(raw->serialize().size(), 60);

    port->setCrcGenerationDisabled(true);
    IPv4Packet packet(IpAddress(1), IpAddress(2), 17, QByteArray(8, 'x'));
    const auto built = boost::make_shared<EthernetFrame>(MacAddress(), MacAddress(), &packet);
    const boost::shared_ptr<EthernetFrame> flipped(raw->clone(true, 1));
    const QByteArray flippedBytes = flipped->serialize();
    for (int i = 0; i < 2; ++i) {
        const std::string steps = stepsOf(*port, raw);
        EXPECT_EQ(raw->serialize().size(), 64);
        EXPECT_EQ(steps, busyRead + sending(raw->serialize()));
        EXPECT_EQ(stepsOf(*port, flipped), busyRead + sending(flippedBytes));
        EXPECT_EQ(stepsOf(*port, built), busyRead + sending(built->serialize()));
    }
    EXPECT_THAT(counters(*port), ElementsAre(7, 3 * 64 + 4 * 68, 0, 0, 0, 0, 0, 0));
}

TEST_F(FrameSend, pausesAheadOfTheTransmitterWait)
{
    const mesk::tests::ScopedVariable wait("KIVO_PRE_SEND_WAIT_TIME", "25");
    const auto port = openPort(0);
    EXPECT_EQ(stepsOf(*port, frameOf(60)), "sleep 25\n" + busyRead + sending(bytesOf(60)));
    port->sendFrame(frameOf(1519));
    EXPECT_EQ(TestClock::sleptMs(), 25U);
}

TEST_F(FrameSend, transmitterThatIsNotThereOrNeverReadyDropsTheFrame)
{
    const auto port = openPort(0);
    const std::string unexpected = "'p': Unexpected value in KHalRegisterRead(...) (result = ";
    for (const auto& [value, shown] : {std::pair{0x1FFU, "0x1ff)"}, std::pair{0xFFU, "0xff)"}}) {
        board.control().freezeTransmitter(0, 0, value);
        EXPECT_EQ(stepsOf(*port, frameOf(60)),
                  std::string(busyRead).append("4 ") + unexpected + shown + "\n");
    }
    EXPECT_THAT(TestEventLog::records(), ElementsAre("PHY Id " + unexpected + "0x1ff)"));

    log.setLevel(7); // the event log needs no log
    const auto stuck = openPort(1);
    board.control().freezeTransmitter(0, 1, 0xFF00);
    // The clock of the tests goes on by a millisecond with each look.
    EXPECT_EQ(stepsOf(*stuck, frameOf(60)).size(), 1001 * busyRead.size());
    EXPECT_EQ(TestEventLog::records().back(), "PHY Id 'p': Transmitter not ready after 1000 milliseconds");
    log.setLevel(3);
    EXPECT_THAT(counters(*port), ElementsAre(0, 0, 0, 0, 0, 0, 0, 0));

    board.control().freezeTransmitter(0, 0, 0);
    board.control().script("KHalRegisterRead", 1, 2, 1, 0);
    EXPECT_EQ(stepsOf(*port, frameOf(60)), busyRead + busyRead + busyRead + sending(bytesOf(60)))
        << "a read that fails counts as busy";
}

TEST_F(FrameSend, referenceEndsWithTheCall)
{
    const auto port = openPort(0);
    const auto good = frameOf(60);
    const auto large = frameOf(2000);
    // Counted in the same full expression, before the argument itself is destroyed at the latest.
    EXPECT_EQ((port->sendFrame(good), good.use_count()), 1);
    EXPECT_EQ((port->sendFrame(large), large.use_count()), 1);
    board.control().freezeTransmitter(0, 0, 0xFF);
    EXPECT_EQ((port->sendFrame(good), good.use_count()), 1);
}
