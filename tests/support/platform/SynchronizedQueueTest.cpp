#include "support/platform/SynchronizedQueue.h"

#include <chrono>
#include <ctime>
#include <gmock/gmock.h>
#include <memory>
#include <thread>
#include <vector>

namespace kivo::templates::platform {
namespace {

using Queue = SynchronizedQueue<std::shared_ptr<int>>;
constexpr auto whileBlocked = std::chrono::milliseconds(50);

std::shared_ptr<int> item(int number)
{
    return std::make_shared<int>(number);
}

/// Processor time that the calling thread has used.
std::chrono::nanoseconds busy()
{
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

std::vector<int> drained(Queue& queue)
{
    std::vector<int> numbers;
    for (std::shared_ptr<int> each; queue.tryPop(each);)
        numbers.push_back(*each);
    return numbers;
}

TEST(SynchronizedQueue, givesTheOldestFirstAndThoseFromTheFrontBeforeAll)
{
    Queue queue(64);
    for (const auto& [number, atFront] : {std::pair(1, false), {2, false}, {3, true}, {4, true}})
        queue.push(item(number), atFront);
    EXPECT_THAT(drained(queue), testing::ElementsAre(4, 3, 1, 2));
}

TEST(SynchronizedQueue, blocksAPushWhileItIsFullAndAPopWhileItIsEmpty)
{
    Queue queue(2);
    queue.push(item(1), false);
    queue.push(item(2), false);
    std::atomic<bool> pushed{false};
    std::thread producer([&] {
        queue.push(item(3), true);
        pushed = true;
        EXPECT_LT(busy(), whileBlocked / 2);
    });
    std::this_thread::sleep_for(whileBlocked);
    EXPECT_FALSE(pushed);
    std::shared_ptr<int> taken;
    queue.pop(taken);
    EXPECT_EQ(*taken, 1);
    producer.join();
    EXPECT_THAT(drained(queue), testing::ElementsAre(3, 2));

    std::thread consumer([&] {
        queue.pop(taken);
        EXPECT_LT(busy(), whileBlocked / 2);
    });
    std::this_thread::sleep_for(whileBlocked);
    queue.push(item(5), false);
    consumer.join();
    EXPECT_EQ(*taken, 5);
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
    int none = 0;
    EXPECT_FALSE(queue.tryPop(none));
}

TEST(SynchronizedQueue, interruptFreesAllWhoWaitAndIsFinal)
{
    const std::shared_ptr<int> kept = item(1);
    const std::shared_ptr<int> refused = item(2);
    auto full = std::make_unique<Queue>(1);
    Queue empty(1);
    full->push(kept, false);
    std::vector<std::thread> blocked;
    for (int index = 0; index < 2; ++index) {
        blocked.emplace_back(
            [&] { EXPECT_THROW(full->push(refused, false), SynchronizedQueueInterruptException); });
        blocked.emplace_back([&] {
            std::shared_ptr<int> taken;
            EXPECT_THROW(empty.pop(taken), SynchronizedQueueInterruptException);
        });
    }
    std::this_thread::sleep_for(whileBlocked);
    full->interrupt();
    empty.interrupt();
    for (std::thread& thread : blocked)
        thread.join();

    std::shared_ptr<int> taken;
    EXPECT_THROW(full->pop(taken), SynchronizedQueueInterruptException) << "items or not";
    EXPECT_THROW(full->tryPop(taken), SynchronizedQueueInterruptException);
    EXPECT_THROW(empty.push(refused, true), SynchronizedQueueInterruptException) << "room or not";
    EXPECT_THROW(empty.tryPop(taken), SynchronizedQueueInterruptException);
    EXPECT_EQ(taken, nullptr);
    EXPECT_EQ(refused.use_count(), 1);
    EXPECT_EQ(kept.use_count(), 2) << "the queue keeps what it holds";
    full.reset();
    EXPECT_EQ(kept.use_count(), 1);
}

TEST(SynchronizedQueue, ofNoCapacityWaitsForTheInterrupt)
{
    SynchronizedQueue<int> queue(0);
    std::thread producer([&] { EXPECT_THROW(queue.push(1, false), SynchronizedQueueInterruptException); });
    queue.interrupt();
    producer.join();
}

} // namespace
} // namespace kivo::templates::platform
