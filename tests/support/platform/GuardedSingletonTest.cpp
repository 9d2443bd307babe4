#include "support/platform/GuardedSingleton.h"

#include <atomic>
#include <gmock/gmock.h>
#include <thread>
#include <vector>

namespace {

std::atomic<int> made{0};

class Shared : public GuardedSingleton<Shared> {
public:
    Shared() { ++made; }
    void init() override
    {
        std::this_thread::yield();
        foundInInit = instance();
    }

    Shared* foundInInit = nullptr;
};

TEST(GuardedSingleton, isMadeOnceInEachLifeAndGivenToOthersAfterItsInit)
{
    for (int life = 1; life <= 2; ++life) {
        LibraryInitController::init();
        std::vector<std::thread> threads;
        std::vector<Shared*> found(4);
        threads.reserve(found.size());
        for (Shared*& each : found)
            threads.emplace_back([&each] {
                each = Shared::instance();
                EXPECT_EQ(each->foundInInit, each);
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_THAT(found, testing::Each(Shared::instance()));
        EXPECT_EQ(made, life);
        LibraryInitController::deinit();
    }
}

} // namespace
