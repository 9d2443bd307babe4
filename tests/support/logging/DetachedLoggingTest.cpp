// Stands in roots of its own: one without a dispatcher, one whose dispatcher exports no descriptor.

#include "plugin/binding/LoadedLibrary.h"
#include "support/logging/Logging.h"
#include "support/logging/LoggingDispatcherDescriptor.h"

#include <gtest/gtest.h>

namespace kivo::tools::logging {
namespace {

TEST(LoggingWithoutDispatcher, isSilentlyOff)
{
    const auto library = plugin::loadLibrary(loggingDispatcherLibrary, nullptr);
    ASSERT_EQ(library != nullptr, MESK_DISPATCHER_WITHOUT_SYMBOL);

    LibraryInitController::init();
    Logger* const logger = Logging::getLogger("guard.library");
    EXPECT_EQ(Logging::getLogger("another"), logger);
    for (const std::uint32_t level : {levelDetail, levelInformation, levelWarning, levelError})
        EXPECT_FALSE(logger->isEnabled(level)) << level;
    EXPECT_TRUE(logger->isEnabled(levelOff));
    logger->log(levelOff, "reaches nothing", 0, nullptr);
    EXPECT_TRUE(logger->setEnabledForCurrentThread(false));
    EXPECT_FALSE(logger->isEnabled(levelOff + 2));
    LibraryInitController::deinit();
}

} // namespace
} // namespace kivo::tools::logging
