#include "support/platform/SimpleThread.h"

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>
#include <thread>

namespace kivo::templates::platform {
namespace {

class Worker : public SimpleThread {
public:
    explicit Worker(std::function<void()> body)
        : m_body(std::move(body))
    {
    }
    ~Worker() override { join(); }
    void run() override { m_body(); }

private:
    const std::function<void()> m_body;
};

/// Notes the end of a thread, which comes some time after its body has returned.
struct LastWord {
    bool& said;
    ~LastWord()
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        said = true;
    }
};

TEST(SimpleThread, runsOnceForEachStart)
{
    os::ManualResetEvent release(false);
    std::atomic<int> runs{0};
    Worker worker([&] {
        ++runs;
        release.wait();
    });
    EXPECT_TRUE(worker.join()) << "never started";
    for (int run = 1; run <= 2; ++run) {
        release.reset();
        EXPECT_TRUE(worker.start());
        EXPECT_TRUE(worker.start()) << "runs already";
        release.set();
        EXPECT_TRUE(worker.join());
        EXPECT_EQ(runs, run);
    }
    for (; runs < 5; std::this_thread::yield())
        EXPECT_TRUE(worker.start()) << "after a run that nobody joined, as soon as that has ended";
    EXPECT_TRUE(worker.join());
}

TEST(SimpleThread, joinGivesUpAfterItsLimitAndCanBeRepeated)
{
    os::ManualResetEvent release(false);
    Worker worker([&] { release.wait(); });
    worker.start();
    EXPECT_FALSE(worker.join(0));
    const auto before = std::chrono::steady_clock::now();
    EXPECT_FALSE(worker.join(1));
    const auto took = std::chrono::steady_clock::now() - before;
    EXPECT_GE(took, std::chrono::seconds(1));
    EXPECT_LT(took, std::chrono::seconds(30));
    release.set();
    EXPECT_TRUE(worker.join());
    EXPECT_TRUE(worker.join(1));
}

TEST(SimpleThread, letsSeveralThreadsJoinAndIsGoneForEachOfThem)
{
    for (int round = 0; round < 50; ++round) {
        bool gone = false; // not atomic: what the thread wrote is visible after every join
        os::ManualResetEvent release(false);
        Worker worker([&] {
            const thread_local LastWord lastWord{gone};
            static_cast<void>(lastWord);
            release.wait();
        });
        worker.start();
        const auto joins = [&](std::uint32_t timeoutSeconds) {
            EXPECT_TRUE(worker.join(timeoutSeconds));
            EXPECT_TRUE(gone);
        };
        std::thread first(joins, SimpleThread::noTimeout);
        std::thread second(joins, 60);
        release.set();
        first.join();
        second.join();
    }
}

TEST(SimpleThread, doesNotWaitForItself)
{
    bool joined = true;
    SimpleThread* self = nullptr;
    Worker worker([&] { joined = self->join(); });
    self = &worker;
    worker.start();
    worker.join();
    EXPECT_FALSE(joined);
}

TEST(SimpleThread, reportsThatTheSystemGaveNoThread)
{
    pthread_attr_t usual;
    pthread_attr_t absurd;
    ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
    pthread_attr_init(&absurd);
    ASSERT_EQ(pthread_attr_setstacksize(&absurd, std::size_t{1} << 50U), 0);
    ASSERT_EQ(pthread_setattr_default_np(&absurd), 0);
    bool ran = false;
    Worker worker([&] { ran = true; });
    EXPECT_FALSE(worker.start());
    EXPECT_TRUE(worker.join());
    EXPECT_FALSE(ran);
    pthread_setattr_default_np(&usual);
    EXPECT_TRUE(worker.start());
    EXPECT_TRUE(worker.join());
    EXPECT_TRUE(ran);
    pthread_attr_destroy(&absurd);
    pthread_attr_destroy(&usual);
}

TEST(SetCurrentThreadName, cutsWhatThePlatformDoesNotTake)
{
    std::thread([] {
        std::array<char, 64> text{};
        setCurrentThreadName("UiqAct/1000000-77");
        pthread_getname_np(pthread_self(), text.data(), text.size());
        EXPECT_STREQ(text.data(), "UiqAct/1000000-");
    }).join();
}

} // namespace
} // namespace kivo::templates::platform
