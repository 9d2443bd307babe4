#include "support/platform/GuardedSingleton.h"

#include <atomic>
#include <gmock/gmock.h>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;

std::vector<std::string> events;
std::atomic<int> made{0};

class First : public GuardedSingleton<First> {
public:
    First() { ++made; }
    ~First() override { events.emplace_back("~First"); }
    void init() override
    {
        std::this_thread::yield();
        foundInInit = instance();
    }
    void deinit() override { events.emplace_back("deinit First"); }

    First* foundInInit = nullptr;
};

class Second : public GuardedSingleton<Second> {
public:
    ~Second() override { events.emplace_back("~Second"); }
    void init() override { First::instance(); }
};

class Unregistered : public GuardedSingleton<Unregistered> {
public:
    ~Unregistered() override { events.emplace_back("~Unregistered"); }
};

TEST(GuardedSingleton, isMadeOnceAndEndsWithTheController)
{
    for (int life = 1; life <= 2; ++life) {
        events.clear();
        made = 0;
        LibraryInitController::init();
        std::vector<std::thread> threads;
        std::vector<First*> found(4);
        threads.reserve(found.size());
        for (First*& each : found)
            threads.emplace_back([&each] {
                each = First::instance();
                // Whoever gets the pointer gets it after init has returned.
                EXPECT_EQ(each->foundInInit, each);
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_THAT(found, testing::Each(First::instance()));
        EXPECT_EQ(made, 1) << "life " << life;
        Second::instance();

        GuardedSingletonBase::InstancePointer* out = nullptr;
        EXPECT_EQ(First::instance()->instancePointer(&out), out);
        EXPECT_EQ(*out, First::instance());
        LibraryInitController::deinit();
        EXPECT_EQ(*out, nullptr);
        EXPECT_THAT(events, ElementsAre("~Second", "deinit First", "~First"));
    }
}

TEST(GuardedSingleton, madeWithoutAControllerIsNeverTornDown)
{
    events.clear();
    Unregistered* const object = Unregistered::instance();
    LibraryInitController::init();
    EXPECT_EQ(Unregistered::instance(), object);
    LibraryInitController::deinit();
    EXPECT_EQ(Unregistered::instance(), object);
    EXPECT_THAT(events, testing::IsEmpty());
}

} // namespace
