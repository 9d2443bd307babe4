#include "plugin/LibraryInitController.h"
#include "support/platform/GuardedSingleton.h"

#include <gmock/gmock.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> events;

void note(const char* event)
{
    events.emplace_back(event);
}

/// A singleton that tells what happens to it.
template <char name>
// NOLINTNEXTLINE(*-virtual-class-destructor): it is virtual by the base, which depends on the name
class Noted : public GuardedSingleton<Noted<name>> {
public:
    Noted() { tell(" made"); }
    ~Noted() override { tell(" deleted"); }
    void init() override { tell(" init"); }
    void deinit() override { tell(" deinit"); }

private:
    static void tell(const char* what) { events.push_back(std::string(1, name) + what); }
};

class LibraryInitControllerTest : public testing::Test {
protected:
    LibraryInitControllerTest() { events.clear(); }
    void TearDown() override { EXPECT_EQ(LibraryInitController::useCount(), 0U); }

    static void registerCoreAndMesk()
    {
        LibraryInitController::registerLibrary([] { note("core up"); }, [] { note("core down"); });
        LibraryInitController::registerLibrary([] { note("mesk up"); }, [] { note("mesk down"); });
    }
};

TEST_F(LibraryInitControllerTest, theLastDeinitTakesLibrariesDownAndThenSingletonsNewestFirst)
{
    LibraryInitController::init();
    GuardedSingletonBase::InstancePointer* pointer = nullptr;
    EXPECT_EQ(Noted<'a'>::instance()->instancePointer(&pointer), pointer);
    EXPECT_EQ(pointer->load(), Noted<'a'>::instance());
    registerCoreAndMesk();
    Noted<'b'>::instance();
    EXPECT_THAT(events, ElementsAre("a made", "a init", "core up", "mesk up", "b made", "b init"));

    events.clear();
    LibraryInitController::deinit();
    EXPECT_THAT(events,
                ElementsAre("mesk down", "core down", "b deinit", "b deleted", "a deinit", "a deleted"));
    EXPECT_EQ(pointer->load(), nullptr);

    events.clear();
    LibraryInitController::init();
    Noted<'a'>::instance();
    LibraryInitController::deinit();
    EXPECT_THAT(events, ElementsAre("a made", "a init", "a deinit", "a deleted"))
        << "the second life starts from nothing";
}

TEST_F(LibraryInitControllerTest, usesAreCountedAndEveryRegistrationCounts)
{
    for (int use = 0; use < 2; ++use) {
        LibraryInitController::init();
        registerCoreAndMesk();
    }
    EXPECT_EQ(LibraryInitController::useCount(), 2U);
    EXPECT_THAT(events, ElementsAre("core up", "mesk up", "core up", "mesk up"));

    events.clear();
    LibraryInitController::deinit();
    EXPECT_THAT(events, IsEmpty());
    LibraryInitController::deinit();
    EXPECT_THAT(events, ElementsAre("mesk down", "core down", "mesk down", "core down"));
}

TEST_F(LibraryInitControllerTest, withoutAControllerNothingIsRemembered)
{
    registerCoreAndMesk();
    Noted<'c'>* const unregistered = Noted<'c'>::instance();
    LibraryInitController::init();
    LibraryInitController::deinit();
    EXPECT_THAT(events, ElementsAre("core up", "mesk up", "c made", "c init"));
    EXPECT_EQ(Noted<'c'>::instance(), unregistered);
}

TEST_F(LibraryInitControllerTest, anExceptionOfAnInitFunctionLeavesTheGuardFreeAndTheDeinitFunctionRegistered)
{
    LibraryInitController::init();
    EXPECT_THROW(LibraryInitController::registerLibrary([] { throw std::runtime_error("refused"); },
                                                        [] { note("down"); }),
                 std::runtime_error);
    std::thread([] { // would spin for ever on a guard that is still held
        LibraryInitController::init();
        LibraryInitController::deinit();
    })
        .join();
    LibraryInitController::deinit();
    EXPECT_THAT(events, ElementsAre("down"));
}

TEST_F(LibraryInitControllerTest, anInitFunctionMayComeBackWhileOtherThreadsWait)
{
    static std::atomic<bool> otherIsThere{false};
    static std::atomic<bool> otherIsThrough{false};
    static std::thread other;
    LibraryInitController::init();
    LibraryInitController::registerLibrary(
        [] {
            Noted<'d'>::instance();
            other = std::thread([] {
                otherIsThere = true;
                LibraryInitController::registerLibrary([] {}, [] {});
                otherIsThrough = true;
            });
            while (!otherIsThere)
                std::this_thread::yield();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            note(otherIsThrough ? "other came in" : "other waits");
        },
        [] {});
    other.join();
    LibraryInitController::deinit();
    EXPECT_THAT(events, ElementsAre("d made", "d init", "other waits", "d deinit", "d deleted"));
}

} // namespace
