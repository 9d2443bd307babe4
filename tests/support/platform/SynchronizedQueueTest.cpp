#include "support/platform/SynchronizedQueue.h"

#include <chrono>
#include <ctime>
#include <gmock/gmock.h>
#include <memory>
#include <thread>
#include <vector>

namespace kivo::templates::platform {
namespace {

using testing::ElementsAre;
using Ended = SynchronizedQueueInterruptException;
constexpr auto whileBlocked = std::chrono::milliseconds(50);

/// Processor time that the calling thread has used.
std::chrono::nanoseconds busy()
{
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

std::vector<int> drained(SynchronizedQueue<int>& queue)
{
    std::vector<int> numbers;
    for (int each = 0; queue.tryPop(each);)
        numbers.push_back(each);
    return numbers;
}

TEST(SynchronizedQueue, givesTheOldestFirstAndThoseFromTheFrontBeforeAll)
{
    SynchronizedQueue<int> queue(64);
    for (const auto& [number, atFront] : {std::pair(1, false), {2, false}, {3, true}, {4, true}})
        queue.push(number, atFront);
    EXPECT_THAT(drained(queue), ElementsAre(4, 3, 1, 2));
}

TEST(SynchronizedQueue, blocksAPushWhileItIsFullAndAPopWhileItIsEmpty)
{
    SynchronizedQueue<int> queue(2);
    queue.push(1, false);
    queue.push(2, false);
    std::atomic<bool> pushed{false};
    std::thread producer([&] {
        queue.push(3, true);
        pushed = true;
        EXPECT_LT(busy(), whileBlocked / 2);
    });
    std::this_thread::sleep_for(whileBlocked);
    EXPECT_FALSE(pushed);
    int taken = 0;
    queue.pop(taken);
    EXPECT_EQ(taken, 1);
    producer.join();
    EXPECT_THAT(drained(queue), ElementsAre(3, 2));

    std::thread consumer([&] {
        queue.pop(taken);
        EXPECT_LT(busy(), whileBlocked / 2);
    });
    std::this_thread::sleep_for(whileBlocked);
    queue.push(5, false);
    consumer.join();
    EXPECT_EQ(taken, 5);
}

TEST(SynchronizedQueue, losesNothingBetweenManyThreads)
{
    constexpr int threadsPerSide = 3;
    constexpr int itemsPerThread = 2000;
    SynchronizedQueue<int> queue(3);
    std::atomic<long> sum{0};
    std::vector<std::thread> threads;
    for (int index = 0; index < threadsPerSide; ++index) {
        threads.emplace_back([&, index] {
            for (int number = 1; number <= itemsPerThread; ++number)
                queue.push(number, index == 0);
        });
        threads.emplace_back([&] {
            for (int count = 0, number = 0; count < itemsPerThread; ++count) {
                queue.pop(number);
                sum += number;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(sum, threadsPerSide * (itemsPerThread * (itemsPerThread + 1L) / 2));
    EXPECT_THAT(drained(queue), ElementsAre());
}

TEST(SynchronizedQueue, interruptFreesAllWhoWaitAndIsFinal)
{
    using Item = std::shared_ptr<int>;
    const Item kept = std::make_shared<int>(1);
    const Item refused = std::make_shared<int>(2);
    auto full = std::make_unique<SynchronizedQueue<Item>>(1);
    SynchronizedQueue<Item> empty(1);
    SynchronizedQueue<Item> roomless(0);
    full->push(kept, false);
    std::vector<std::thread> blocked;
    for (int index = 0; index < 2; ++index) {
        blocked.emplace_back([&] { EXPECT_THROW(full->push(refused, false), Ended); });
        blocked.emplace_back([&] { EXPECT_THROW(roomless.push(refused, false), Ended); });
        blocked.emplace_back([&] {
            Item taken;
            EXPECT_THROW(empty.pop(taken), Ended);
        });
    }
    std::this_thread::sleep_for(whileBlocked);
    for (SynchronizedQueue<Item>* const each : {full.get(), &empty, &roomless})
        each->interrupt();
    for (std::thread& thread : blocked)
        thread.join();

    Item taken;
    EXPECT_THROW(full->pop(taken), Ended) << "items or not";
    EXPECT_THROW(full->tryPop(taken), Ended);
    EXPECT_THROW(empty.push(refused, true), Ended) << "room or not";
    EXPECT_THROW(empty.tryPop(taken), Ended);
    EXPECT_EQ(taken, nullptr);
    EXPECT_EQ(refused.use_count(), 1);
    EXPECT_EQ(kept.use_count(), 2) << "the queue keeps what it holds";
    full.reset();
    EXPECT_EQ(kept.use_count(), 1);
}

} // namespace
} // namespace kivo::templates::platform
