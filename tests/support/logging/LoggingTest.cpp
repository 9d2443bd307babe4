#include "support/logging/Logging.h"
#include "support/platform/os/Event.h"
#include "tests/support/logging/RecordingDispatcherRecord.h"

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
    mesk::tests::RecordingDispatcherRecord& record = dispatcher.record();
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
    record.ids["alias"] = record.idOf("name");
    record.level = levelInformation;
    const Logger* const logger = Logging::getLogger("name");
    record.level = levelError;
    EXPECT_EQ(Logging::getLogger("name"), logger);
    EXPECT_EQ(Logging::getLogger("alias"), logger);
    EXPECT_NE(Logging::getLogger("other"), logger);
    EXPECT_TRUE(logger->isEnabled(levelInformation));

    // A change for an id that has no logger yet leaves no trace.
    dispatcher.changeLevel("later", levelDetail);
    EXPECT_FALSE(Logging::getLogger("later")->isEnabled(levelWarning));
    EXPECT_TRUE(Logging::getLogger("later")->isEnabled(levelError));
    dispatcher.changeLevel("name", levelError);
    EXPECT_FALSE(logger->isEnabled(levelWarning));
}

TEST_F(LoggingWithDispatcher, standsCallsFromWithinTheAttachment)
{
    std::thread other;
    record.attachObserver = [&] {
        dispatcher.changeLevel("early", levelDetail);
        const Logger* const early = Logging::getLogger("early");
        EXPECT_FALSE(early->isEnabled(levelError));
        early->log(levelError, "dropped", 0, nullptr);
        other = std::thread([&] { dispatcher.changeLevel("early", levelDetail); });
    };
    const Logger* const logger = Logging::getLogger("early");
    other.join();
    logger->log(levelError, "kept", 0, nullptr);
    EXPECT_THAT(dispatcher.texts(levelError), testing::ElementsAre("kept"));
}

TEST_F(LoggingWithDispatcher, goesSilentWhenTheDispatcherGoes)
{
    dispatcher.setLevel(levelDetail);
    const Logger* const logger = Logging::getLogger("name");
    templates::platform::os::ManualResetEvent nameCame(false), otherCame(false);
    dispatcher.onLine(
        [&](const RecordedLine& line) { (line.logger == "name" ? nameCame : otherCame).set(); });
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
    EXPECT_TRUE(nameCame.waitFor(10000) && otherCame.waitFor(10000));
    for (std::uint32_t level = 0; level < 50; ++level)
        dispatcher.setLevel(level % levelOff);
    dispatcher.goAway();
    stop = true;
    first.join();
    second.join();
    dispatcher.onLine(nullptr);

    dispatcher.clear();
    logger->log(levelError, "dropped", 0, nullptr);
    EXPECT_THAT(dispatcher.lines(), testing::IsEmpty());
    EXPECT_NE(Logging::getLogger("name"), logger);
    EXPECT_EQ(Logging::getLogger("name"), Logging::getLogger("other"));
    EXPECT_FALSE(Logging::getLogger("name")->isEnabled(levelError));
    LibraryInitController::deinit();
    EXPECT_EQ(record.detachCount, 0U) << "one that has gone wants no farewell";

    LibraryInitController::init();
    Logging::getLogger("name");
    EXPECT_NE(record.client.logging, nullptr);
    LibraryInitController::deinit();
    EXPECT_EQ(record.detachCount, 1U);
    EXPECT_EQ(record.client.logging, nullptr);
    LibraryInitController::init();
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
