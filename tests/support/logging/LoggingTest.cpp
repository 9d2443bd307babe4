#include "support/logging/Logging.h"
#include "tests/support/logging/RecordingDispatcher.h"
#include "tests/support/logging/RecordingDispatcherControl.h"

#include <atomic>
#include <gmock/gmock.h>
#include <thread>

namespace kivo::tools::logging {
namespace {

using mesk::tests::RecordedLine;
using mesk::tests::RecordingDispatcher;

class LoggingWithDispatcher : public testing::Test {
protected:
    void SetUp() override { LibraryInitController::init(); }
    void TearDown() override { LibraryInitController::deinit(); }

    RecordingDispatcher dispatcher;
    mesk::tests::RecordingDispatcherControl& control = dispatcher.control();
};

TEST_F(LoggingWithDispatcher, handsLinesOnWithIdLevelAndExtraData)
{
    const Logger* const logger = Logging::getLogger("guard.library");
    EXPECT_FALSE(logger->isEnabled(levelError));
    dispatcher.setLevel(levelWarning);
    EXPECT_FALSE(logger->isEnabled(levelInformation));
    EXPECT_TRUE(logger->isEnabled(levelWarning));

    const int extra = 5;
    logger->log(levelWarning, "thread-id=12|up", sizeof(extra), &extra);
    logger->log(levelDetail, "no head", 0, nullptr); // the level test is the caller's
    ASSERT_EQ(dispatcher.lines().size(), 2U);
    const RecordedLine line = dispatcher.lines().front();
    EXPECT_EQ(line.logger, "guard.library");
    EXPECT_EQ(line.extraSize, sizeof(extra));
    EXPECT_EQ(line.extraData, &extra);
    EXPECT_THAT(dispatcher.texts(levelWarning), testing::ElementsAre("up"));
    EXPECT_THAT(dispatcher.texts(levelDetail), testing::ElementsAre("no head"));
}

TEST_F(LoggingWithDispatcher, keepsOneLoggerForEachIdWithItsFirstLevel)
{
    control.shareId("alias", "name");
    control.setReportedLevel(levelInformation);
    const Logger* const logger = Logging::getLogger("name");
    control.setReportedLevel(levelError);
    EXPECT_EQ(Logging::getLogger("name"), logger);
    EXPECT_EQ(Logging::getLogger("alias"), logger);
    EXPECT_NE(Logging::getLogger("other"), logger);
    EXPECT_TRUE(logger->isEnabled(levelInformation));

    // A change for an id that has no logger yet leaves no trace.
    control.changeLevel(control.idOf("later"), levelDetail);
    EXPECT_FALSE(Logging::getLogger("later")->isEnabled(levelWarning));
    EXPECT_TRUE(Logging::getLogger("later")->isEnabled(levelError));
    control.changeLevel(control.idOf("name"), levelError);
    EXPECT_FALSE(logger->isEnabled(levelWarning));
}

TEST_F(LoggingWithDispatcher, standsCallsFromWithinTheAttachment)
{
    std::thread other;
    control.onAttach([&] {
        control.changeLevel(1, levelDetail);
        const Logger* const early = Logging::getLogger("early");
        EXPECT_FALSE(early->isEnabled(levelError));
        early->log(levelError, "dropped", 0, nullptr);
        other = std::thread([&] { control.changeLevel(1, levelDetail); });
    });
    const Logger* const logger = Logging::getLogger("early");
    other.join();
    logger->log(levelError, "kept", 0, nullptr);
    EXPECT_THAT(dispatcher.texts(levelError), testing::ElementsAre("kept"));
}

TEST_F(LoggingWithDispatcher, goesSilentWhenTheDispatcherGoes)
{
    dispatcher.setLevel(levelDetail);
    const Logger* const logger = Logging::getLogger("name");
    std::atomic<bool> stop{false};
    const auto logOn = [&](const char* name) {
        while (!stop) {
            Logger* const each = Logging::getLogger(name);
            if (each->isEnabled(levelDetail))
                each->log(levelDetail, "line", 0, nullptr);
        }
    };
    std::thread first(logOn, "name");
    std::thread second(logOn, "other");
    for (std::uint32_t level = 0; level < 50; ++level)
        dispatcher.setLevel(level % levelOff);
    control.goAway();
    stop = true;
    first.join();
    second.join();

    dispatcher.clear();
    logger->log(levelError, "dropped", 0, nullptr);
    EXPECT_THAT(dispatcher.lines(), testing::IsEmpty());
    EXPECT_NE(Logging::getLogger("name"), logger);
    EXPECT_EQ(Logging::getLogger("name"), Logging::getLogger("other"));
    EXPECT_FALSE(Logging::getLogger("name")->isEnabled(levelError));
}

TEST_F(LoggingWithDispatcher, takesLeaveAtTeardownUnlessTheDispatcherHasGone)
{
    for (const bool goes : {false, true}) {
        const unsigned detached = control.detachCount();
        Logging::getLogger("name");
        EXPECT_TRUE(control.attached());
        if (goes)
            control.goAway();
        LibraryInitController::deinit();
        EXPECT_EQ(control.detachCount() - detached, goes ? 0U : 1U);
        EXPECT_FALSE(control.attached());
        LibraryInitController::init();
    }
}

TEST_F(LoggingWithDispatcher, mutesALoggerForOneThread)
{
    dispatcher.setLevel(levelDetail);
    Logger* const logger = Logging::getLogger("name");
    EXPECT_TRUE(logger->setEnabledForCurrentThread(true)) << "not muted yet";
    EXPECT_TRUE(logger->setEnabledForCurrentThread(false));
    EXPECT_FALSE(logger->setEnabledForCurrentThread(false));
    EXPECT_FALSE(logger->isEnabled(levelError));
    EXPECT_TRUE(Logging::getLogger("other")->isEnabled(levelError));
    std::thread([&] { EXPECT_TRUE(logger->isEnabled(levelError)); }).join();
    EXPECT_FALSE(logger->setEnabledForCurrentThread(true));
    EXPECT_TRUE(logger->isEnabled(levelError));
}

} // namespace
} // namespace kivo::tools::logging
