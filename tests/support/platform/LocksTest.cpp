#include "support/platform/ReadWriteLockGuard.h"
#include "support/platform/RecursiveMutexGuard.h"
#include "support/platform/SpinLockVariableGuard.h"
#include "support/platform/os/Event.h"
#include "support/platform/os/Thread.h"

#include <atomic>
#include <chrono>
#include <gmock/gmock.h>
#include <optional>
#include <thread>
#include <vector>

namespace kivo::templates::platform {
namespace {

constexpr auto whileBlocked = std::chrono::milliseconds(50);

template <typename Body>
void onThreads(int count, const Body& body)
{
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index)
        threads.emplace_back([&body, index] { body(index); });
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
    EXPECT_TRUE(entered);
}

TEST(RecursiveMutexGuard, stepsOutOfTheLockAndBackIn)
{
    RecursiveMutex mutex;
    int counter = 0;
    {
        RecursiveMutexGuard guard(&mutex);
        guard.unlock();
        onThreads(4, [&](int) {
            for (int round = 0; round < 500; ++round) {
                RecursiveMutexGuard inner(&mutex);
                ++counter;
                inner.unlock();
                inner.lock();
                ++counter;
            }
        });
        guard.lock();
        EXPECT_EQ(counter, 4000);
        guard.unlock(); // the destructor must not unlock once more
    }
    std::thread([&] { const RecursiveMutexGuard guard(&mutex); }).join();
}

TEST(SpinLockVariableGuard, keepsOthersOutAndLetsTheOwnerBackIn)
{
    std::atomic<std::uint32_t> spin{0};
    std::atomic<std::uint32_t> owner{0};
    int counter = 0;
    onThreads(4, [&](int index) {
        for (int round = 0; round < 200; ++round) {
            const SpinLockVariableGuard outer(&spin, &owner);
            { // the inner one leaves the variable to the outer one
                const SpinLockVariableGuard inner(&spin, &owner);
                ++counter;
            }
            EXPECT_EQ(spin, 1U) << index;
            EXPECT_EQ(owner, os::currentThreadId()) << index;
        }
    });
    EXPECT_EQ(counter, 800);
    EXPECT_EQ(spin, 0U);
    EXPECT_EQ(owner, 0U);
}

TEST(SpinLockVariableGuard, worksWithoutAnOwnerVariable)
{
    std::atomic<std::uint32_t> spin{0};
    int counter = 0;
    onThreads(3, [&](int) {
        for (int round = 0; round < 200; ++round) {
            const SpinLockVariableGuard guard(&spin, nullptr);
            ++counter;
        }
    });
    EXPECT_EQ(counter, 600);
    EXPECT_EQ(spin, 0U);
}

TEST(ManualResetEvent, freesAllWhoWaitEvenIfTheResetFollowsAtOnce)
{
    os::ManualResetEvent event(false);
    EXPECT_FALSE(event.waitFor(1));
    std::thread unlimited([&] { event.wait(); });
    std::thread limited([&] { EXPECT_TRUE(event.waitFor(~std::uint64_t{0})); });
    std::this_thread::sleep_for(whileBlocked);
    event.set();
    event.reset();
    unlimited.join();
    limited.join();
    EXPECT_FALSE(event.waitFor(0));
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
    onThreads(4, [&](int index) {
        for (int round = 0; round < 200; ++round) {
            const bool writes = index % 2 == 0;
            const ReadWriteLockGuard guard(&lock,
                                           writes ? ReadWriteLockGuard::Write : ReadWriteLockGuard::Read);
            if (writes) {
                ++one;
                ++two;
            }
            EXPECT_EQ(one, two);
        }
    });
    EXPECT_EQ(one, 400);
}

TEST(ReadWriteLock, putsAWaitingWriterBeforeNewReaders)
{
    ReadWriteLock lock;
    std::vector<char> order; // guarded by the lock, and read after both have ended
    RecursiveMutex orderMutex;
    const auto enter = [&](char who, ReadWriteLockGuard::Mode mode) {
        const ReadWriteLockGuard guard(&lock, mode);
        const RecursiveMutexGuard orderGuard(&orderMutex);
        order.push_back(who);
    };
    std::optional<ReadWriteLockGuard> held(std::in_place, &lock, ReadWriteLockGuard::Read);
    std::thread writer([&] { enter('w', ReadWriteLockGuard::Write); });
    std::this_thread::sleep_for(2 * whileBlocked);
    std::thread reader([&] { enter('r', ReadWriteLockGuard::Read); });
    std::this_thread::sleep_for(whileBlocked);
    {
        const RecursiveMutexGuard orderGuard(&orderMutex);
        EXPECT_THAT(order, testing::IsEmpty());
    }
    held.reset();
    writer.join();
    reader.join();
    EXPECT_THAT(order, testing::ElementsAre('w', 'r'));
}

} // namespace
} // namespace kivo::templates::platform
