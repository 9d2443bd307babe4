#include "interface/PhysicalNetworkInterfaceEventQueue.h"
#include "interface/PniActionCommandTimeout.h"
#include "packets/EthernetFrame.h"
#include "tests/interface/PortFixture.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <future>
#include <mutex>
#include <sstream>
#include <thread>

using kivo::core::mesk::PhysicalNetworkInterfaceEvent;
using namespace std::chrono_literals;

namespace {

/// Does something again and again, as long as it lives.
class Meanwhile {
public:
    explicit Meanwhile(std::function<void()> action, std::chrono::microseconds pause = 200us)
        : m_thread([this, pause, action = std::move(action)] {
            for (; !m_stop; std::this_thread::sleep_for(pause)) {
                action();
            }
        })
    {
    }
    ~Meanwhile()
    {
        m_stop = true;
        m_thread.join();
    }

private:
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

/// Of all threads but those that leave: one that was joined may stand in the list for a moment still.
std::vector<std::string> threadNames()
{
    constexpr unsigned long leaves = 0x4; // PF_EXITING of the kernel's flags
    std::vector<std::string> names;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string line; // 123 (NAME) S 1 1 1 0 -1 FLAGS ...
        std::getline(std::ifstream(task.path() / "stat"), line);
        const auto from = line.find('(') + 1, to = line.rfind(')');
        std::istringstream rest(line.substr(to + 1));
        std::string skipped;
        unsigned long flags = leaves; // of one that is gone already
        rest >> skipped >> skipped >> skipped >> skipped >> skipped >> skipped >> flags;
        if ((flags & leaves) == 0) {
            names.push_back(line.substr(from, to - from));
        }
    }
    return names;
}

} // namespace

class Worker : public mesk::tests::PortFixture {};

TEST_F(Worker, pollTellsEachReportAndTheFirstOfARunOfErrors)
{
    const auto port = openPort(1);
    const auto events = port->eventQueue();
    events->enabled = true;
    board.control().setLostWords(0, 9, 12);
    const auto polled = [&] { return journalOf([&] { port->pollActionTimeoutQueue(); }); };
    const auto withWord = [&](std::uint32_t word) {
        board.inject(9, {word});
        return polled();
    };
    const auto withResult = [&](int result) {
        board.control().script("KHalDataQueueReadBufferLong", 1, 1, 0, result);
        return polled();
    };
    const std::string read = "DataQueueReadBufferLong(9, 4, 100)\n";
    const std::string lost = read + "DataQueueGetNrOfLostWords(9)\n";
    const std::string good = read + "3 'p': Action command timeout detected --- Count: ";
    const std::string tooMany = "'p': Too many received words for action command timeout UIQ buffer "
                                "(received words = 1) [lost words: 12]";
    const std::string error = lost + "5 'p': Error(s) in KHalDataQueueReadBufferLong(...) (result = -7, "
                                     "received words = 0) [lost words: 12]\nsleep 100\n";
    const std::string dropped = lost + "5 " + tooMany + "\n";
    EXPECT_EQ(withResult(-2120), read);
    EXPECT_EQ(withWord(0x10003), good + "3\n");
    for (unsigned i = 0; i < 2; ++i) {
        EXPECT_EQ(withWord(0x00003), dropped) << "each of them";
    }
    EXPECT_EQ(withResult(-7), read + "sleep 100\n") << "silenced by the word before";
    events->enabled = false;
    for (unsigned i = 0; i < 2; ++i) {
        EXPECT_EQ(withWord(0xFFFFFFFE), good + "65534\n");
        EXPECT_EQ(withResult(-7), error);
        EXPECT_EQ(withResult(-7), read + "sleep 100\n");
    }
    boost::shared_ptr<PhysicalNetworkInterfaceEvent> event;
    ASSERT_TRUE(events->queue->tryPop(event));
    EXPECT_EQ(dynamic_cast<kivo::core::mesk::PniActionCommandTimeout&>(*event).count, 3U);
    EXPECT_FALSE(events->queue->tryPop(event)) << "none while not enabled";
    EXPECT_THAT(mesk::tests::TestEventLog::records(), testing::ElementsAre("PHY Id " + tooMany));

    withWord(0x10000);
    log.setLevel(7);
    EXPECT_TRUE(port->reinitialize(0));
    EXPECT_EQ(polled(), lost + "sleep 100\n") << "the device is released";
    EXPECT_EQ(polled(), read + "sleep 100\n");
}

TEST_F(Worker, isOneThreadAndAFullEventQueueHoldsNobodyUp)
{
    const auto threads = threadNames().size();
    setFirmware(2, 1);
    auto port = openPort(1);
    port->startWorkers();
    EXPECT_EQ(threadNames().size(), threads) << "no action commands, no thread";
    setFirmware(2, 0);
    port = openPort(1);
    port->eventQueue()->enabled = true;
    port->startWorkers();
    EXPECT_TRUE(port->open());
    port->startWorkers();
    board.inject(9, std::vector<std::uint32_t>(66, 0x10001));
    const auto left = [this] { return board.control().queuedWords(0, 9); };
    for (unsigned i = 0; i < 1000 && left() > 1; ++i) {
        std::this_thread::sleep_for(5ms);
    }
    EXPECT_THAT(threadNames(), testing::Contains("UiqAct/0-1"));
    EXPECT_EQ(threadNames().size(), threads + 1);
    EXPECT_TRUE(port->reinitialize(0)); // by the one thread that would have made room
    EXPECT_TRUE(port->reinitialize(1));
    EXPECT_EQ(left(), 1U) << "blocked with the 65th in hand";
    port->requestStop();
    log.setLevel(7); // the wait for the thread is no matter of the lines
    port->finish();
    EXPECT_EQ(threadNames().size(), threads);
}

TEST_F(Worker, releaseWaitsForOneReadAtMost)
{
    const auto port = openPort(1);
    port->startWorkers();
    const Meanwhile reports([this] { board.inject(9, {0x10001}); }, 40ms);
    std::ptrdiff_t readsOfAll = 0;
    for (unsigned i = 0; i < 100; ++i) {
        std::this_thread::sleep_for(2ms); // a read is under way
        board.clearJournal();
        EXPECT_TRUE(port->reinitialize(0));
        const auto calls = board.calls();
        const auto is = [](const char* name) {
            return [=](const auto& call) { return call.operation == std::string(name); };
        };
        const auto freed = std::find_if(calls.begin(), calls.end(), is("KHalFreeDevice"));
        const auto reads = std::count_if(calls.begin(), freed, is("KHalDataQueueReadBufferLong"));
        // One more may have ended between the start of this journal and the release's announcement.
        EXPECT_LE(reads, 2);
        readsOfAll += reads;
        EXPECT_TRUE(std::none_of(calls.begin(), calls.end(), [](const auto& call) {
            return call.arguments[0] != 0 && call.result < 0 && call.result != -2120;
        })) << "a call was in flight on the freed handle";
        EXPECT_TRUE(port->reinitialize(1));
    }
    EXPECT_GT(readsOfAll, 0);
}

TEST_F(Worker, roundsLeaveNothingWhereverTheStopComes)
{
    board.control().setJournalCapacity(0);
    const Meanwhile reports([this] { board.inject(9, {0x10001}); });
    const auto threads = threadNames().size();
    for (unsigned i = 0; i < 1000; ++i) {
        const auto port = makePort(1);
        port->eventQueue()->enabled = true;
        const auto stopAt = [&](unsigned stage) { stage == i % 5 ? port->requestStop() : void(); };
        stopAt(0);
        const auto beside = std::async(std::launch::async, stopAt, 1);
        ASSERT_TRUE(port->open());
        stopAt(2);
        port->startWorkers();
        beside.wait();
        stopAt(3);
        if (i % 5 == 2 || i % 5 == 3) {
            port->finish();
        } // else the destruction ends it
    }
    EXPECT_EQ(threadNames().size(), threads);
    EXPECT_EQ(board.openHandles() + board.openDesigns(), 0U);
}

TEST_F(Worker, standsTrafficAndChangesAroundIt)
{
    board.control().setJournalCapacity(0);
    for (unsigned i = 0; i < 4; ++i) {
        const auto port = openPort(1);
        const auto events = port->eventQueue();
        std::mutex sending, receiving;
        unsigned taken = 0;
        port->startWorkers();
        {
            const Meanwhile reports([this] { board.inject(9, {0x10001, 2, 0x10003}); }, 20us);
            const Meanwhile transmissions([this] { board.inject(1, {4, 1, 0x10002}); });
            const Meanwhile sender([&] {
                const std::lock_guard<std::mutex> lock(sending);
                port->sendFrame(boost::make_shared<EthernetFrame>(QByteArray(60, 'x')));
            });
            const Meanwhile receiver([&] {
                const std::lock_guard<std::mutex> lock(receiving);
                port->receiveFrame(nullptr);
            });
            const auto consume = [&] {
                events->enabled = !events->enabled;
                boost::shared_ptr<PhysicalNetworkInterfaceEvent> event;
                try {
                    for (unsigned n = 0; n < 100; ++n) {
                        taken += events->queue->tryPop(event) ? 1 : 0;
                    }
                } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): stopped
                }
            };
            const Meanwhile consumer(consume, 1ms);
            const Meanwhile louder([this] { log.setLevel(2); });
            const Meanwhile quieter([this] { log.setLevel(7); });
            for (unsigned n = 0; n < 20; ++n) {
                std::this_thread::sleep_for(3ms);
                const std::scoped_lock pause(sending, receiving);
                EXPECT_TRUE(port->reinitialize(0) && port->reinitialize(1));
            }
            if (i == 2) {
                log.goAway();
            }
            if (i != 3) {
                port->requestStop();
                port->finish();
            }
        }
        EXPECT_GT(taken, 0U);
    }
    EXPECT_EQ(board.openHandles() + board.openDesigns(), 0U);
}
