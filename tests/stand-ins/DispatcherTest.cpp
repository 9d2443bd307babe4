// The dispatcher as its clients see it: loaded by name from the bin/ of a root that is the test's own.

#include "stand-ins/dispatcher/DispatcherControl.h"
#include "stand-ins/dispatcher/DispatcherDescriptor.h"
#include "tests/plugin/TemporaryRoot.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <dlfcn.h>
#include <pty.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

using namespace kivo::dispatcher;
using testing::EndsWith;
using testing::HasSubstr;

template <typename Condition>
bool comesTrue(Condition condition)
{
    for (int tries = 0; tries < 1000 && !condition(); ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return condition();
}

/// A client and what it was told. The calls carry no context, so each of the two has functions of its own.
template <int Number>
struct Client {
    static inline std::atomic<std::uint32_t> levels[8]; // by the identity of the logger
    static inline std::atomic<int> gone;
    static inline std::atomic<bool> attached;
    static inline GetLoggerCall getLogger;
    static inline LogCall log;

    static void attach(const DispatcherDescriptor& library)
    {
        for (auto& level : levels)
            level = 0;
        attached = true;
        library.attach(
            &attached, [] { ++gone; }, levelChanged, &getLogger, &log);
    }
    static void detach(const DispatcherDescriptor& library)
    {
        library.detach(&attached);
        attached = false;
    }
    static void levelChanged(std::uint64_t id, std::uint32_t level)
    {
        std::this_thread::sleep_for(std::chrono::microseconds(100)); // a detach that doesn't wait overtakes
        EXPECT_TRUE(attached);
        levels[id] = level;
    }
    /// Whether it is told this level of a logger, sooner or later.
    static bool hears(std::uint64_t id, std::uint32_t level)
    {
        return comesTrue([=] { return levels[id] == level; });
    }
};

class DispatcherTest : public testing::Test {
public:
    ~DispatcherTest() override { unload(); }

protected:
    void load(const std::string& setup, const char* environment = "")
    {
        setenv("KIVO_LOG", environment, 1);
        root.write("logging.conf", setup);
        module = dlopen(root.copy(MESK_DISPATCHER_FILE, "bin/dispatcher.so").c_str(), RTLD_NOW);
        ASSERT_NE(module, nullptr) << dlerror();
        library = static_cast<DispatcherDescriptor*>(dlsym(module, "logging_dispatcher_descriptor"));
        observe = reinterpret_cast<KivoDispatcherObserveFunction>(dlsym(module, "KivoDispatcherObserve"));
        Client<0>::attach(*library);
    }
    void unload()
    {
        if (module != nullptr)
            dlclose(std::exchange(module, nullptr));
        std::filesystem::remove_all(root.path() / "bin");
    }
    std::uint32_t levelOf(const char* name)
    {
        std::uint32_t level = 0;
        Client<0>::getLogger(name, &id, &level);
        return level;
    }
    void log(std::uint32_t level, const char* text) const { Client<0>::log(id, level, text, 0, nullptr); }
    std::string written(const std::string& file) const { return mesk::tests::bytesOf(root.path() / file); }

    const mesk::tests::TemporaryRoot root;
    void* module = nullptr;
    DispatcherDescriptor* library = nullptr;
    KivoDispatcherObserveFunction observe = nullptr;
    std::uint64_t id = 0; // of the logger that was asked for last
};

TEST_F(DispatcherTest, aFileThatChangesChangesLevelsAndSinksUntilDetach)
{
    testing::internal::CaptureStderr();
    load("; all\n[levels]\nloud = 2x\n* = error\n[sinks]\nfile = log/one.txt\n[more]\nx = 1\n");
    Client<1>::attach(*library);
    EXPECT_EQ(levelOf("a"), 5U);
    log(5, "first");
    log(4, "below the level");
    EXPECT_THAT(written("log/one.txt"), EndsWith(" [a] error: first\n"));

    root.write("logging.conf", "\n[levels]\nloud = 2x\n* = 2\n[sinks]\nstderr = false\nfile = two-%p.txt\n");
    EXPECT_TRUE(Client<0>::hears(id, 2) && Client<1>::hears(id, 2));
    log(2, "second\n");
    EXPECT_THAT(written("two-" + std::to_string(getpid()) + ".txt"), EndsWith(" [a] detail: second\n"));

    Client<0>::detach(*library);
    std::filesystem::remove(root.path() / "logging.conf");
    EXPECT_TRUE(Client<1>::hears(id, 4)) << "the default, now that the file is gone";
    const auto threads = [entries = std::filesystem::directory_iterator()]() {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"), entries);
    };
    const auto before = threads();
    Client<1>::detach(*library);
    EXPECT_TRUE(comesTrue([&] { return threads() == before - 1; })); // the system lags behind a join
    EXPECT_THAT(written("log/one.txt"), EndsWith("first\n"));
    const std::string stamp = "....-..-.. ..:..:..\\.... ";
    const std::string where = stamp + "\\[dispatcher\\] warning: " + root.path().string() + "/logging.conf:";
    const std::string ignored = "' is not understood, ignored\n";
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::MatchesRegex(where + "3: 'loud = 2x" + ignored + where + "7: '.more." + ignored +
                                      stamp + "\\[a\\] error: first\n"));
}

TEST_F(DispatcherTest, theLastRuleThatFitsCountsAndTheEnvironmentGoesBeforeTheFile)
{
    testing::internal::CaptureStderr();
    load("[levels]\n*=5\nb=5\nguard.library=7",
         "*=3, guard.library = "
         "detail,kivo.*.mesk.*=off,*Interface=11,loud=9x,=3,no,a=,b=-1,c=4294967296,,d=error");
    std::vector<std::uint32_t> levels;
    for (const char* const name : {"", "guard.library", "guard.library2", "kivo.core.mesk.Other", "b", "d",
                                   "InterfaceInterface", "kivo.core.mesk.KivoGbeInterface"})
        levels.push_back(levelOf(name));
    EXPECT_THAT(levels, testing::ElementsAre(3, 2, 3, 7, 3, 5, 11, 11));
    std::string complaints = testing::internal::GetCapturedStderr();
    for (const char* const refused : {"loud=9x", "=3", "no", "a=", "b=-1", "c=4294967296"}) {
        const std::size_t at =
            complaints.find(std::string("KIVO_LOG: '") + refused + "' is no logger name and");
        ASSERT_NE(at, std::string::npos) << refused;
        complaints.erase(0, complaints.find('\n', at) + 1);
    }
    EXPECT_EQ(complaints, "");
}

TEST_F(DispatcherTest, aFileIsRotatedAndTheOldestGoes)
{
    load("[sinks]\nstderr=false\nfile=r.txt\nfileSizeBytes=1024\nfileCount=2");
    levelOf("a");
    for (int line = 0; line < 100; ++line)
        log(5, "a line of some length");
    EXPECT_THAT(written("r.1.txt").size(), testing::AllOf(testing::Gt(900U), testing::Le(1024U)));
    EXPECT_THAT(written("r.txt"), EndsWith("a line of some length\n"));
    EXPECT_FALSE(exists(root.path() / "r.2.txt"));
}

TEST_F(DispatcherTest, aTerminalGetsColoursUnlessNobodyWantsThem)
{
    setenv("TERM", "xterm", 1);
    for (const char* const noColor : {"1", ""}) {
        setenv("NO_COLOR", noColor, 1);
        int terminal = -1;
        int line = -1;
        if (openpty(&terminal, &line, nullptr, nullptr, nullptr) != 0) {
            GTEST_SKIP() << "this machine gives no pseudo terminal";
        }
        const int standardError = dup(STDERR_FILENO);
        dup2(line, STDERR_FILENO);
        load("");
        levelOf("a");
        log(5, "text");
        unload();
        dup2(standardError, STDERR_FILENO);
        char shown[256] = {};
        EXPECT_GT(read(terminal, shown, sizeof shown - 1), 0);
        EXPECT_THAT(shown,
                    HasSubstr(*noColor == '\0' ? "\x1b[31m\x1b[1merror: text\x1b[m" : "] error: text"));
        for (const int each : {terminal, line, standardError})
            close(each);
    }
}

TEST_F(DispatcherTest, anObserverSeesMoreThanTheSinksAndAClientHearsOfTheUnloading)
{
    testing::internal::CaptureStderr();
    load("");
    levelOf("x.a");
    std::string seen;
    const auto collect = [](void* context, const char* name, std::uint32_t level, const char* text) {
        *static_cast<std::string*>(context) += name + std::to_string(level) + text;
    };
    observe("x.*", 2, collect, &seen);
    EXPECT_TRUE(Client<0>::hears(id, 2));
    log(2, "detail");
    observe(nullptr, 0, nullptr, nullptr);
    EXPECT_TRUE(Client<0>::hears(id, 4));
    log(3, "information");
    EXPECT_EQ(seen, "x.a2detail");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    const int gone = Client<0>::gone;
    unload();
    EXPECT_EQ(Client<0>::gone, gone + 1);
}

TEST_F(DispatcherTest, callsOfAllKindsMayComeAtOnceAndNoneAfterDetach)
{
    load("[sinks]\nstderr = false\n");
    levelOf("a");
    std::atomic<bool> end{false};
    const auto ignore = [](void*, const char*, std::uint32_t, const char*) {};
    std::thread others([&] {
        while (!end) {
            log(5, "text");
            observe("*", 2, ignore, nullptr);
        }
    });
    for (const std::string level : {"5", "3"}) {
        std::string setup = "[levels]\n*=N\n[sinks]\nstderr=false\nfile=N";
        std::replace(setup.begin(), setup.end(), 'N', level.front());
        root.write("logging.conf", setup);
        EXPECT_TRUE(comesTrue([&] {
            Client<1>::attach(*library);
            std::uint64_t other = 0;
            std::uint32_t now = 0;
            Client<1>::getLogger("b", &other, &now);
            EXPECT_TRUE(Client<1>::hears(id, 2));
            Client<1>::detach(*library);
            return exists(root.path() / level);
        }));
    }
    end = true;
    others.join();
    observe(nullptr, 0, nullptr, nullptr);
    EXPECT_TRUE(Client<0>::hears(id, 3));
}

} // namespace
