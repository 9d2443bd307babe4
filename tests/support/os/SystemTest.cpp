#include "support/platform/os/Clock.h"
#include "support/platform/os/EventLog.h"
#include "support/platform/os/File.h"
#include "support/platform/os/Module.h"
#include "tests/plugin/TemporaryRoot.h"

#include <array>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <syslog.h>

namespace {
std::ostringstream journal;
}

// In the place of the C library's, so that the record can be read back.
extern "C" {
void openlog(const char* ident, int option, int facility)
{
    journal << "open " << ident << ' ' << option << ' ' << (facility == LOG_USER) << '\n';
}

void syslog(int priority, const char* format, ...)
{
    std::array<char, 256> text{};
    va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the analyzer loses va_start over several files
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    journal << (priority == LOG_ERR) << ' ' << text.data() << '\n';
}

void closelog()
{
    journal << "close\n";
}
}

namespace kivo::templates::platform::os {
namespace {

TEST(EventLog, writesOneRecordAndLeavesNoIdentBehind)
{
    reportEventLogError("100%s\n");
    EXPECT_EQ(journal.str(), "open kivo-gige-phy 0 1\n1 [category 0, event 2] 100%s\n\nclose\n");
}

TEST(Clock, sleepsAtLeastAsLongAsAsked)
{
    const std::uint64_t before = monotonicNowNs();
    sleepMs(20);
    EXPECT_GE(monotonicNowNs() - before, 20'000'000U);
}

TEST(File, readsRegularFilesOnly)
{
    const mesk::tests::TemporaryRoot root;
    const std::filesystem::path folder = root.path() / "folder";
    EXPECT_TRUE(createDirectory(folder));
    EXPECT_TRUE(createDirectory(folder)) << "is there already";
    EXPECT_FALSE(createDirectory(folder / "missing" / "sub"));

    const std::string bytes = std::string(40000, 'x') + '\0' + "\r\n";
    std::ofstream(folder / "file", std::ios::binary) << bytes;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(createDirectory(folder / "file"));
    std::string text = "unchanged";
    for (const char* const name : {"pipe", "missing", ""})
        EXPECT_FALSE(readTextFile(folder / name, text)) << name;
    EXPECT_EQ(text, "unchanged");
    EXPECT_TRUE(readTextFile(folder / "file", text));
    EXPECT_EQ(text, bytes);
}

TEST(Module, saysWhereAnAddressComesFromAndWhyAFileDoesNotLoad)
{
    std::array<char, 4096> path{};
    const std::size_t length = modulePathOf(&journal, path.data(), path.size());
    EXPECT_EQ(path.data(), std::filesystem::canonical("/proc/self/exe"));
    std::array<char, 5> cut{};
    EXPECT_EQ(modulePathOf(&journal, cut.data(), cut.size()), length);
    EXPECT_EQ(std::string(cut.data()), std::string(path.data(), 4));
    EXPECT_EQ(modulePathOf(nullptr, path.data(), path.size()), 0U);

    const ModuleLoad load = loadModule("/nowhere/library.so");
    EXPECT_EQ(load.handle, nullptr);
    EXPECT_NE(load.error, 0U);
    EXPECT_NE(load.errorText.find("/nowhere/library.so"), std::string::npos);
}

} // namespace
} // namespace kivo::templates::platform::os
