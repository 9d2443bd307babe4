#include "plugin/binding/LoadedLibrary.h"
#include "tests/plugin/TemporaryRoot.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

namespace {

using kivo::plugin::LoadedLibrary;
using kivo::plugin::loadLibrary;
using mesk::tests::bytesOf;
using mesk::tests::TemporaryRoot;
namespace fs = std::filesystem;

struct Operation {
    const char* name;
    const char* answer; ///< of the test's library to the probe's arguments
    const char* absent; ///< told where the library hasn't the operation
};
// In the order of the look-ups, the board library's first.
const Operation operations[] = {
    {"KHalInitDevice", "1000000100007", "0"},
    {"KHalFreeDevice", "200003", "-2130"},
    {"KHalGetDeviceCount", "300000", "0"},
    {"KHalGetDevice", "1000000400007", "0"},
    {"KHalPutDevice", "500003", "-2130"},
    {"KHalGetBoardInfoInt", "600083", "0"},
    {"KHalGetBoardInfoString", "key", "null"},
    {"KHalConfigureFpga", "800043", "-2130"},
    {"KHalRegisterWrite", "900573", "-2130"},
    {"KHalRegisterRead", "1000573", "-2130"},
    {"KHalDataQueueClear", "1100073", "-2130"},
    {"KHalDataQueueReadBufferLong", "1298573", "-2130"},
    {"KHalDataQueueGetNrOfLostWords", "1300073", "0"},
    {"DovFirmwareTrampoline", "1000001400087", "0"},
    {"DovGetRegisterByName", "1500084", "0"},
    {"DovUnloadDovFile", "1600004", "-114"},
};

/// What the probe says of libraries without the operations whose names start with `absent`.
std::string answers(const std::string& absent)
{
    std::string lines;
    for (const Operation& each : operations)
        lines.append(std::string(each.name).rfind(absent, 0) == 0 ? each.absent : each.answer).append("\n");
    return lines;
}
const std::string none = "-", all;

/// The library without one of its exports: the name is another one.
std::string libraryWithout(const std::string& name)
{
    std::string bytes = bytesOf(MESK_PROBED_LIBRARY);
    const std::string entry = '\0' + name + '\0';
    std::size_t found = 0;
    for (std::size_t at = 0; (at = bytes.find(entry, at)) != std::string::npos; ++found)
        bytes[at + 1] = '_';
    EXPECT_GT(found, 0U) << name;
    return bytes;
}

class BindingTest : public testing::Test {
protected:
    /// Runs the probe from a place below the temporary root, under changed environment variables.
    std::string probe(const std::string& mode, const std::string& environment = "",
                      const std::string& place = "bin/probe")
    {
        if (!fs::exists(root.path() / place))
            root.copy(MESK_BINDING_PROBE, place);
        const std::string command = "env -u KIVODIR5_64 -u KIVODIR5 " + environment + ' ' +
                                    (root.path() / place).string() + ' ' + mode;
        FILE* const pipe = popen(command.c_str(), "r");
        std::string output;
        for (int c = 0; (c = std::fgetc(pipe)) != EOF;)
            output += static_cast<char>(c);
        EXPECT_EQ(pclose(pipe), 0) << command;
        return output;
    }

    void putLibraries(const std::string& hal, const std::string& dov)
    {
        root.write("bin/kivo_hal.so", hal);
        root.write("bin/dovrt.so", dov);
    }

    const TemporaryRoot root;
    const std::string complete = bytesOf(MESK_PROBED_LIBRARY);
};

TEST_F(BindingTest, anAbsentOperationGivesItsAnswerAndTheOthersWork)
{
    for (const Operation& each : operations) {
        const std::string without = libraryWithout(each.name);
        putLibraries(without, without);
        std::string expected;
        for (const Operation& other : operations)
            expected.append(&other == &each ? other.absent : other.answer).append("\n");
        EXPECT_EQ(probe("calls"), expected) << each.name;
    }
}

TEST_F(BindingTest, whatCannotBeLoadedGivesTheAnswersUntilItCanBe)
{
    EXPECT_EQ(probe("calls"), answers(all)) << "no files";
    EXPECT_EQ(probe("lookups"), "-2130 -1\n");
    putLibraries("no library", "");
    EXPECT_EQ(probe("calls"), answers(all)) << "files that are no libraries";
    putLibraries(complete, "no library");
    EXPECT_EQ(probe("calls"), answers("Dov"));

    fs::remove(root.path() / "bin/kivo_hal.so");
    fs::remove(root.path() / "bin/dovrt.so");
    const std::string from = std::string(" ") + MESK_PROBED_LIBRARY + ' ' + root.path().string();
    EXPECT_EQ(probe("late" + from + "/bin/kivo_hal.so" + from + "/bin/dovrt.so"), answers(none));
}

TEST_F(BindingTest, eachNameIsLookedUpOnceUnlessTheDesignRuntimeLacksItsSentinel)
{
    std::string board;
    std::string design = "DovLoadDovFileWithType\n";
    for (const Operation& each : operations)
        (each.name[0] == 'K' ? board : design).append(each.name).append("\n");
    putLibraries(complete, complete);
    EXPECT_EQ(probe("lookups"), board + design + "0 0\n");

    // Bound anew by each of the two times three calls, and working.
    putLibraries(complete, libraryWithout("DovLoadDovFileWithType"));
    std::string sixTimes;
    for (int time = 0; time < 6; ++time)
        sixTimes += design;
    EXPECT_EQ(probe("lookups"), board + sixTimes + "0 0\n");
    EXPECT_EQ(probe("calls"), answers(none));
}

TEST_F(BindingTest, threadsThatBindAtOnceAllGetWholeTables)
{
    putLibraries(complete, complete);
    const std::string each = answers(none);
    EXPECT_EQ(probe("threads"), each + each + each + each);
}

TEST_F(BindingTest, theOwnPlaceComesBeforeTheEnvironment)
{
    const std::string here = root.path().string() + '\n';
    const std::string both = "KIVODIR5_64=/six KIVODIR5=/five";
    EXPECT_EQ(probe("root", both, "BIN/plugins/probe"), here + here + here);
    fs::create_directory(root.path() / "links");
    fs::create_symlink(root.path() / "BIN/plugins/probe", root.path() / "links/probe");
    EXPECT_EQ(probe("root", both, "links/probe"), here + here + here) << "where the file really lies";
}

TEST_F(BindingTest, theEnvironmentIsAskedInOrderAndItsAnswerKept)
{
    const std::string longest = '/' + std::string(1022, 'r');
    const struct {
        std::string environment, first, then;
    } cases[] = {
        {"KIVODIR5_64=/six// KIVODIR5=/five", "/six", "/six"},
        {"KIVODIR5=/five/", "/five", "/five"},
        {"KIVODIR5_64= KIVODIR5=/five", "/five", "/five"},
        {"", "null", "/late"},
        {"KIVODIR5_64=" + longest, longest, longest},
        {"KIVODIR5_64=" + longest + "r KIVODIR5=/five", "/five", "/five"},
        {"KIVODIR5=" + longest + 'r', "null", "/late"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(probe("root", each.environment, "tools/probe"),
                  each.first + '\n' + each.then + '\n' + each.then + '\n');
}

TEST_F(BindingTest, aLibraryIsLoadedFromTheRootGiven)
{
    putLibraries(complete, "no library");
    const std::unique_ptr<LoadedLibrary> first = loadLibrary("kivo_hal", root.path().c_str());
    const std::unique_ptr<LoadedLibrary> second = loadLibrary("kivo_hal", root.path().c_str());
    ASSERT_TRUE(first != nullptr && second != nullptr);
    EXPECT_EQ(first->handle, second->handle);
    EXPECT_EQ(first->path, root.path() / "bin/kivo_hal.so");
    EXPECT_FALSE(first->freeOnDestroy);
    EXPECT_EQ(first->lastError, 0U);
    EXPECT_EQ(first->lastErrorText, "");
    EXPECT_NE(first->symbol("KHalInitDevice"), nullptr);
    EXPECT_EQ(first->symbol("KHalNoSuchOperation"), nullptr);

    EXPECT_EQ(loadLibrary("dovrt", root.path().c_str()), nullptr);
    EXPECT_EQ(loadLibrary("absent", root.path().c_str()), nullptr);

    // Paths of up to 1023 characters are taken.
    std::string longRoot = root.path().string();
    longRoot.append(1023 - std::string("/bin/kivo_hal.so").size() - longRoot.size(), '/');
    EXPECT_NE(loadLibrary("kivo_hal", longRoot.c_str()), nullptr);
    EXPECT_EQ(loadLibrary("kivo_hal", (longRoot + '/').c_str()), nullptr);
}

} // namespace
