#include "packets/EthernetFrame.h"
#include "tests/interface/PortFixture.h"

#include <boost/make_shared.hpp>

#include <array>
#include <thread>

using mesk::tests::Interface;
using mesk::tests::TestClock;
using mesk::tests::TestEventLog;
using testing::ElementsAre;

namespace {

using Words = std::vector<std::uint32_t>;

/// An announced size and so many words, with junk in the bits that don't matter.
Words transmission(std::uint32_t announced, std::uint32_t words, bool ended = true)
{
    Words all{announced};
    for (std::uint32_t i = 0; i < words; ++i) {
        all.push_back((i % 2 == 0 ? 0xFFFF0000U : 0) | (i * 0x0203 & 0xFFFFU));
    }
    all.back() = (all.back() & 0xFFFEFFFF) | (ended ? 0x10000U : 0);
    return all;
}

QByteArray bytesOf(const Words& sizeAndWords)
{
    QByteArray bytes;
    for (std::size_t i = 1; i < sizeAndWords.size(); ++i) {
        bytes.append(static_cast<char>(sizeAndWords[i] & 0xFF))
            .append(static_cast<char>(sizeAndWords[i] >> 8));
    }
    return bytes;
}

std::string queueRead(std::uint32_t size)
{
    return "DataQueueReadBufferLong(0, " + std::to_string(size) + ", 100)\n";
}

} // namespace

class FrameReceive : public mesk::tests::PortFixture {
protected:
    /// What a call that must fail leaves in the journal.
    std::string failure(Interface& port, bool withFlag = true)
    {
        bool ok = withFlag;
        return journalOf([&] {
            EXPECT_EQ(port.receiveFrame(withFlag ? &ok : nullptr), nullptr);
            EXPECT_FALSE(ok);
        });
    }
    std::string success(Interface& port, const Words& words, bool withFlag = true)
    {
        board.inject(0, words);
        bool ok = !withFlag;
        return journalOf([&] {
            const auto frame = port.receiveFrame(withFlag ? &ok : nullptr);
            ASSERT_NE(frame, nullptr);
            EXPECT_TRUE(ok);
            EXPECT_EQ(frame->serialize(), bytesOf(words));
        });
    }
    /// The n-th queue read from now answers `result`.
    void scriptRead(unsigned n, int result)
    {
        board.control().script("KHalDataQueueReadBufferLong", n, 1, 0, result);
    }
};

TEST_F(FrameReceive, packsTheLowHalvesOfTheWords)
{
    const auto port = openPort(0);
    EXPECT_EQ(failure(*port), queueRead(4)) << "an empty queue is no event";
    board.inject(0, {64}); // announced, but nothing comes
    EXPECT_EQ(failure(*port, false), queueRead(4) + queueRead(128));
    unsigned bytes = 64;
    for (const std::uint32_t size : {14U, 64U, 590U, 1514U, 65536U}) {
        EXPECT_EQ(success(*port, transmission(size, size / 2)), queueRead(4) + queueRead(2 * size));
        bytes += size;
    }
    success(*port, transmission(65, 32), false); // an odd announcement comes one byte short
    EXPECT_THAT(counters(*port), ElementsAre(0, 0, 6, bytes, 0, 0, 0, 0));
}

TEST_F(FrameReceive, sizesOfZeroLogOncePerRun)
{
    const auto port = openPort(0);
    board.control().setLostWords(0, 0, -7);
    const std::string told = queueRead(4) +
                             "DataQueueGetNrOfLostWords(0)\n4 'p': transmission size of zero received from "
                             "KHalDataQueueReadBufferLong(...) [lost words: -7]!\n";
    board.inject(0, {0, 0});
    EXPECT_EQ(failure(*port, false), told);
    EXPECT_EQ(failure(*port), queueRead(4));
    scriptRead(1, 0); // nothing delivered, no error
    EXPECT_EQ(failure(*port), queueRead(4));
    success(*port, transmission(60, 30));
    board.inject(0, {0});
    EXPECT_EQ(failure(*port), told);
    success(*port, transmission(60, 30));
    log.setLevel(7); // a run that begins unseen stays unseen
    board.inject(0, {0, 0});
    EXPECT_EQ(failure(*port), queueRead(4));
    log.setLevel(2);
    EXPECT_EQ(failure(*port), queueRead(4));
    EXPECT_THAT(counters(*port), ElementsAre(0, 0, 2, 120, 6, 0, 0, 0));
}

TEST_F(FrameReceive, badTransmissionsAreToldFromEachOther)
{
    const auto port = openPort(0);
    board.control().setLostWords(0, 0, 3);
    const auto tell = [&](const Words& words, int result, std::uint32_t level, const std::string& text) {
        board.inject(0, words);
        if (result != 0) {
            scriptRead(2, result);
        }
        log.clear();
        failure(*port, result == 0);
        board.control().clearScripts();
        EXPECT_EQ(log.texts(level).back(), "PHY Id 'p': " + text);
        EXPECT_EQ(board.control().queuedWords(0, 0), 0U);
    };
    const auto badEnd = [&](const Words& words, int result, const std::string& detail) {
        tell(words, result, 2, "... EOT: " + detail + "\n");
        EXPECT_THAT(log.texts(4), ElementsAre("PHY Id 'p': end of transmission validity check failed! "
                                              "[lost words: 3]"));
    };
    badEnd(transmission(64, 32, false), 0, "0x3e5d - TRANSMISSION_SIZE: 128 - RESULT: 128");
    badEnd(transmission(64, 31, false), 0, "0xfffe3c5a - TRANSMISSION_SIZE: 128 - RESULT: 124");
    badEnd({1}, 4, "0 - TRANSMISSION_SIZE: 2 - RESULT: 4");
    badEnd({64}, 3, "0 - TRANSMISSION_SIZE: 128 - RESULT: 0");
    badEnd({1}, 0x7FFFFFFF, "0 - TRANSMISSION_SIZE: 2 - RESULT: 2147483644"); // looks at no word behind
    success(*port, transmission(64, 32)); // whose end isn't that of what is claimed and not written
    badEnd({65}, 128, "0 - TRANSMISSION_SIZE: 130 - RESULT: 128");
    success(*port, transmission(66, 33));
    badEnd({65}, 132, "0 - TRANSMISSION_SIZE: 130 - RESULT: 132");
    const auto badSize = [&](const Words& words, const std::string& sizes) {
        tell(words, 0, 4,
             "transmission size validity check failed! (expected: " + sizes + ") [lost words: 3]");
    };
    badSize(transmission(64, 31), "128, received: 124");
    badSize(transmission(67, 32), "134, received: 128");
    badSize(transmission(65537, 32768), "131074, received: 131072");
    badSize(transmission(0x80010000, 32768), "131072, received: 131072"); // doubling wraps
    EXPECT_THAT(counters(*port), ElementsAre(0, 0, 2, 130, 0, 7, 4, 0));

    log.setLevel(7);
    board.inject(0, transmission(64, 32, false));
    EXPECT_EQ(failure(*port), queueRead(4) + queueRead(128)) << "no line, so no question for lost words";
}

TEST_F(FrameReceive, aWordTooManyIsNoOddSize)
{
    const mesk::tests::EmulatedBoard rounding("[Board0]\npartialWords=read\n");
    const auto port = openPort(0);
    board.inject(0, transmission(65, 33));
    EXPECT_EQ(failure(*port), queueRead(4) + queueRead(130) +
                                  "DataQueueGetNrOfLostWords(0)\n4 'p': transmission size validity check "
                                  "failed! (expected: 130, received: 132) [lost words: 0]\n");
}

TEST_F(FrameReceive, runOfReadErrorsLogsOnceCountsAndSleepsEachTime)
{
    const auto port = openPort(0);
    const std::string error = "'p': Error(s) in KHalDataQueueReadBufferLong(...) (result = -";
    scriptRead(1, -5);
    failure(*port);
    scriptRead(1, -6);
    EXPECT_EQ(failure(*port, false), queueRead(4) + "sleep 100\n");
    board.inject(0, {64}); // read well, and so the run ends
    scriptRead(2, -2121);
    EXPECT_EQ(failure(*port), queueRead(4) + queueRead(128) + "4 " + error + "2121)\nsleep 100\n");
    EXPECT_EQ(log.texts(4).size(), 2U);
    EXPECT_THAT(TestEventLog::records(), ElementsAre("PHY Id " + error + "5)"));
    port->reinitialize(0); // a released device is a run of errors like any other
    failure(*port);
    EXPECT_THAT(counters(*port), ElementsAre(0, 0, 0, 0, 0, 0, 0, 4));
    EXPECT_EQ(TestClock::sleptMs(), 400U);
}

TEST_F(FrameReceive, twoPortsSendAndReceiveAtOnce)
{
    board.control().plug(0, 0, "pair:0.1", nullptr, 0);
    board.control().setJournalCapacity(0);
    const std::array<mesk::tests::Port, 2> ports{openPort(0), openPort(1)};
    constexpr unsigned frames = 100;
    const auto bytes = [](unsigned i) {
        return QByteArray(static_cast<int>(60 + 2 * i), static_cast<char>(i));
    };
    std::vector<std::thread> threads;
    for (const auto& port : ports) {
        threads.emplace_back([&] {
            for (unsigned i = 0; i < frames; ++i) {
                port->sendFrame(boost::make_shared<EthernetFrame>(bytes(i)));
            }
        });
        threads.emplace_back([&] {
            for (unsigned i = 0, idle = 0; i < frames && idle < 10;) {
                const auto frame = port->receiveFrame(nullptr);
                EXPECT_TRUE(!frame || frame->serialize() == bytes(i));
                ++(frame ? i : idle);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    constexpr unsigned sum = frames * 60 + frames * (frames - 1);
    for (const auto& port : ports) {
        EXPECT_THAT(counters(*port), ElementsAre(frames, sum + 4 * frames, frames, sum, 0, 0, 0, 0));
    }
}
