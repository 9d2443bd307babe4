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
    void init() override
    {
        if constexpr (name == 'b')
            Noted<'c'>::instance(); // made later, so it ends earlier
        tell(" init");
    }
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
    EXPECT_EQ(*pointer, Noted<'a'>::instance());
    registerCoreAndMesk();
    Noted<'b'>::instance();
    EXPECT_THAT(events, ElementsAre("a made", "a init", "core up", "mesk up", "b made", "c made", "c init",
                                    "b init"));

    events.clear();
    LibraryInitController::deinit();
    EXPECT_THAT(events, ElementsAre("mesk down", "core down", "c deinit", "c deleted", "b deinit",
                                    "b deleted", "a deinit", "a deleted"));
    EXPECT_EQ(*pointer, nullptr);

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
    Noted<'u'>* const unregistered = Noted<'u'>::instance();
    LibraryInitController::init();
    LibraryInitController::deinit();
    EXPECT_THAT(events, ElementsAre("core up", "mesk up", "u made", "u init"));
    EXPECT_EQ(Noted<'u'>::instance(), unregistered);
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

std::thread other;

/// As an init or a deinit function: comes back in, while another thread has to wait.
template <char name>
void comeBack()
{
    static std::atomic<bool> otherIsThere{false};
    static std::atomic<bool> otherIsThrough{false};
    other = std::thread([] {
        otherIsThere = true;
        LibraryInitController::registerLibrary([] {}, [] {});
        otherIsThrough = true;
    });
    LibraryInitController::registerLibrary([] { note("again up"); }, [] { note("again down"); });
    Noted<name>::instance();
    while (!otherIsThere)
        std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    note(otherIsThrough ? "other came in" : "other waits");
}

TEST_F(LibraryInitControllerTest, initAndDeinitFunctionsMayComeBackWhileOtherThreadsWait)
{
    LibraryInitController::init();
    LibraryInitController::registerLibrary(&comeBack<'d'>, &comeBack<'e'>);
    other.join();
    EXPECT_THAT(events, ElementsAre("again up", "d made", "d init", "other waits"));
    events.clear();
    LibraryInitController::deinit();
    other.join();
    // What registers itself that late isn't called any more, but a singleton ends with all others.
    EXPECT_THAT(events, ElementsAre("again down", "again up", "e made", "e init", "other waits", "e deinit",
                                    "e deleted", "d deinit", "d deleted"));
}

} // namespace
