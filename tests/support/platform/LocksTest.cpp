#include "support/platform/ReadWriteLockGuard.h"
#include "support/platform/RecursiveMutexGuard.h"
#include "support/platform/SpinLockVariableGuard.h"
#include "support/platform/os/Event.h"
#include "support/platform/os/Thread.h"

#include <atomic>
#include <chrono>
#include <future>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace kivo::templates::platform {
namespace {

constexpr auto whileBlocked = std::chrono::milliseconds(50);

/// Runs the body 200 times on each of four threads.
template <typename Body>
void onFourThreads(const Body& body)
{
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int index = 0; index < 4; ++index)
        threads.emplace_back([&body, index] {
            for (int round = 0; round < 200; ++round)
                body(index);
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(RecursiveMutex, isFreeOnlyAfterAsManyUnlocksAsLocks)
{
    RecursiveMutex mutex;
    mutex.lock();
    mutex.lock();
    std::atomic<bool> entered{false};
    std::thread other([&] {
        const RecursiveMutexGuard guard(&mutex);
        entered = true;
    });
    mutex.unlock();
    std::this_thread::sleep_for(whileBlocked);
    EXPECT_FALSE(entered);
    mutex.unlock();
    other.join();
}

TEST(RecursiveMutexGuard, stepsOutOfTheLockAndBackIn)
{
    RecursiveMutex mutex;
    int counter = 0;
    {
        RecursiveMutexGuard guard(&mutex);
        guard.unlock();
        onFourThreads([&](int) {
            RecursiveMutexGuard inner(&mutex);
            ++counter;
            inner.unlock();
            inner.lock();
            ++counter;
        });
        guard.lock();
        EXPECT_EQ(counter, 1600);
        guard.unlock(); // the destructor must not unlock once more
    }
    std::thread([&] { const RecursiveMutexGuard guard(&mutex); }).join();
}

TEST(SpinLockVariableGuard, keepsOthersOutAndLetsTheOwnerBackIn)
{
    std::atomic<std::uint32_t> spin{0};
    std::atomic<std::uint32_t> owner{0};
    int counter = 0;
    onFourThreads([&](int index) {
        const SpinLockVariableGuard outer(&spin, &owner);
        { // the inner one leaves the variable to the outer one
            const SpinLockVariableGuard inner(&spin, &owner);
            ++counter;
        }
        EXPECT_EQ(spin, 1U) << index;
        EXPECT_EQ(owner, os::currentThreadId()) << index;
    });
    EXPECT_EQ(owner, 0U);
    onFourThreads([&](int) {
        const SpinLockVariableGuard guard(&spin, nullptr);
        ++counter;
    });
    EXPECT_EQ(counter, 1600);
    EXPECT_EQ(spin, 0U);
}

TEST(ManualResetEvent, freesAllWhoWaitEvenIfTheResetFollowsAtOnce)
{
    os::ManualResetEvent event(false);
    EXPECT_FALSE(event.waitFor(1));
    std::atomic<int> freed{0};
    std::thread unlimited([&] {
        event.wait();
        ++freed;
    });
    std::thread limited([&] {
        EXPECT_TRUE(event.waitFor(~std::uint64_t{0}));
        ++freed;
    });
    // More than one time only for a machine so busy that a thread doesn't wait yet.
    for (int times = 0; times < 20 && freed < 2; ++times) {
        std::this_thread::sleep_for(whileBlocked);
        event.set();
        event.reset();
        std::this_thread::sleep_for(whileBlocked);
    }
    EXPECT_EQ(freed, 2);
    EXPECT_FALSE(event.waitFor(0));
    event.set(); // frees whoever is still there after a failure
    unlimited.join();
    limited.join();
}

TEST(ReadWriteLock, letsReadersInTogetherAndWritersAlone)
{
    ReadWriteLock lock;
    {
        const ReadWriteLockGuard first(&lock, ReadWriteLockGuard::Read);
        std::thread([&] { const ReadWriteLockGuard second(&lock, ReadWriteLockGuard::Read); }).join();
    }
    int one = 0;
    int two = 0;
    onFourThreads([&](int index) {
        const bool writes = index % 2 == 0;
        const ReadWriteLockGuard guard(&lock, writes ? ReadWriteLockGuard::Write : ReadWriteLockGuard::Read);
        if (writes) {
            ++one;
            ++two;
        }
        EXPECT_EQ(one, two);
    });
    EXPECT_EQ(one, 400);
}

TEST(ReadWriteLock, putsAWaitingWriterBeforeNewReaders)
{
    ReadWriteLock lock;
    std::vector<char> order; // guarded by the lock, and read after all have ended
    const auto enter = [&](char who, ReadWriteLockGuard::Mode mode) {
        const ReadWriteLockGuard guard(&lock, mode);
        order.push_back(who);
    };
    auto held = std::make_unique<ReadWriteLockGuard>(&lock, ReadWriteLockGuard::Read);
    std::thread writer([&] { enter('w', ReadWriteLockGuard::Write); });
    // Readers get in, one after the other, until the writer has announced itself.
    std::future<void> reader;
    for (int tries = 0; tries < 1000; ++tries) {
        reader = std::async(std::launch::async, [&] { enter('r', ReadWriteLockGuard::Read); });
        if (reader.wait_for(4 * whileBlocked) == std::future_status::timeout)
            break;
    }
    held.reset();
    writer.join();
    reader.get();
    ASSERT_GE(order.size(), 2U);
    EXPECT_EQ(std::string(order.end() - 2, order.end()), "wr");
}

} // namespace
} // namespace kivo::templates::platform
