#include "support/config/TweakProperties.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <unistd.h>
#include <vector>

namespace kivo::templates::platform {
namespace {

namespace fs = std::filesystem;

/// A folder of files that goes with the test; the property's environment is clean before and after.
class TweakPropertiesTest : public testing::Test {
protected:
    void SetUp() override
    {
        TearDown();
        fs::create_directories(m_folder);
    }
    void TearDown() override
    {
        unsetenv("APPDATA");
        unsetenv(maskVariable);
        fs::remove(installationFile);
        fs::remove_all(m_folder);
    }
    std::string file(const std::string& name, const std::string& text) const
    {
        std::ofstream(m_folder / name, std::ios::binary) << text;
        return m_folder / name;
    }

    static constexpr const char* mask = "GIGE::DriverClassPortMask";
    static constexpr const char* maskVariable = "KIVO_GIGE_DRIVER_CLASS_PORT_MASK";
    // Of the root in which this program stands.
    const fs::path installationFile = fs::canonical("/proc/self/exe").parent_path().parent_path() / "rt.conf";
    const fs::path m_folder = fs::path(testing::TempDir()) / ("mesk-tweak-test-" + std::to_string(getpid()));
};

/// The value, or the message of what was thrown.
template <typename Lookup>
std::string outcome(const Lookup& lookup)
{
    try {
        return std::to_string(lookup());
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

TEST_F(TweakPropertiesTest, takesTheFirstSourceThatConverts)
{
    struct Case {
        const char* name;
        std::vector<const char*> arguments;
        const char* user;   // value in the per-user file; null: no such file
        const char* system; // the same of the installation-wide file
        const char* variable;
        std::string expected;
    };
    const char* const size = "Global::PCAPFileSizeLimit";
    const char* const none = nullptr;
    const std::string unknown = "TweakProperties: Unknown property requested: '";
    const std::string invalid = "TweakProperties: No valid value found for property '";
    const std::vector<const char*> strange{"pcaplimit",  "---",          "",     "pcaplimit =1",
                                           "pcaplimit=", "pcaplimits=1", nullptr};
    const Case cases[] = {
        {mask, {}, none, none, none, "0"},
        {mask, {}, "3", "4", "5", "3"},
        {mask, {}, "abc", "7", "5", "7"},
        {mask, {}, "", "", "5", "5"},
        {mask, {}, none, "Off", "", "0"},
        {mask, {"=9", "x=9"}, none, none, none, "0"}, // no word: nothing of a command line counts
        {size, {"--PCAPLIMIT=9", "-pcaplimit=8", "pcaplimit=x"}, none, none, none, "8"},
        {size, {"pcapLimit=-12 rest"}, "3", none, none, "-12"},
        {size, strange, "3", none, none, "3"},
        {mask, {}, "12abc", none, none, "12"},
        {mask, {}, "0x10", none, none, "0"},
        {mask, {}, "+2147483647", none, none, "2147483647"},
        {mask, {}, "2147483648", "-2147483648", none, "-2147483648"},
        {"global::enablepcap", {"pcap=1"}, "1", none, none, unknown + "global::enablepcap'"},
        {"Global::EnablePCAP", {"pcap=On"}, "On", none, none, invalid + "Global::EnablePCAP'"},
        {"Nanoprobe::LogDir", {}, none, none, none, invalid + "Nanoprobe::LogDir'"},
    };
    for (const Case& each : cases) {
        if (each.variable != nullptr)
            setenv(maskVariable, each.variable, 1);
        const auto path = [&](const char* fileName, const char* value) {
            std::string text = "[" + std::string(each.name) + "=";
            text.replace(text.find("::"), 2, "]\n");
            return value == nullptr ? std::string() : file(fileName, text.append(value));
        };
        EXPECT_EQ(outcome([&] {
                      return TweakProperties().getProperty<std::int32_t>(
                          TweakPropertyTable, path("user", each.user), path("system", each.system), each.name,
                          static_cast<std::int32_t>(each.arguments.size()), each.arguments.data());
                  }),
                  each.expected)
            << each.name << " user " << (each.user != nullptr ? each.user : "-");
        unsetenv(maskVariable);
    }
}

TEST_F(TweakPropertiesTest, readsEachFileOncePerStoreAndOnlyIfItMustBeAsked)
{
    TweakProperties store;
    const auto read = [&](const std::string& name, std::initializer_list<const char*> arguments = {}) {
        return store.getProperty<std::int32_t>(TweakPropertyTable, m_folder / "user", m_folder / "system",
                                               name, static_cast<std::int32_t>(arguments.size()),
                                               arguments.begin());
    };
    // What a file says while it isn't to be opened would show in the look-ups that follow.
    file("user", "[GIGE]\nDriverClassPortMask=1");
    file("system", "[GIGE]\nDriverClassPortMask=1");
    EXPECT_EQ(read("Global::PCAPFileSizeLimit", {"pcaplimit=9"}), 9);
    file("user", "[FG]\nLoadParametersNumRetries=5");
    EXPECT_EQ(read("FG::LoadParametersNumRetries"), 5);
    file("system", "[GIGE]\nDriverClassPortMask=4");
    EXPECT_EQ(read(mask), 4);
    file("user", "[GIGE]\nDriverClassPortMask=5");
    file("system", "[GIGE]\nDriverClassPortMask=6");
    std::thread other([&] { EXPECT_EQ(read(mask), 4); });
    EXPECT_EQ(read(mask), 4);
    other.join();
}

TEST_F(TweakPropertiesTest, lookUpFindsTheFilesInTheirPlaces)
{
    const auto look = [] { return readTweakProperty<std::int32_t>(mask, 0, nullptr); };
    const bool wasThere = fs::exists("/kivo");
    const fs::path data = m_folder / "data";
    fs::create_directory(data);
    setenv(maskVariable, "9", 1);
    EXPECT_EQ(look(), 9);
    std::ofstream(installationFile) << "[gige]\r\n driverclassportmask = 8 \r\n";
    EXPECT_EQ(look(), 8);
    setenv("APPDATA", data.c_str(), 1);
    EXPECT_EQ(look(), 8);
    EXPECT_TRUE(fs::is_directory(data / "kivo"));
    std::ofstream(data / "kivo" / "rt.conf") << "[GIGE]\nDriverClassPortMask=7";
    EXPECT_EQ(look(), 7);

    // A directory that can't be made, one in the file's place, and none at all: that file is passed over.
    fs::create_directories(m_folder / "odd" / "kivo" / "rt.conf");
    for (const fs::path& folder : {data / "missing" / "deeper", m_folder / "odd", fs::path()}) {
        setenv("APPDATA", folder.c_str(), 1);
        EXPECT_EQ(look(), 8) << folder;
    }
    EXPECT_EQ(fs::exists("/kivo"), wasThere);
}

TEST_F(TweakPropertiesTest, parsesFilesLineByLine)
{
    const std::string path = file("odd", "A=before the first header\n"
                                         "\t[ gige ]\r\n"
                                         "A = first\n"
                                         "a = one = two # three\n"
                                         "[]\n[\n[=\n[GIGE\n"
                                         "[x = y\n"
                                         "empty =\n"
                                         "no assignment\n"
                                         "#A = comment\n"
                                         " = no key\n"
                                         "long = " +
                                             std::string(100000, 'z') + "\n" + std::string("nul\0 = 1\n", 9) +
                                             "[ ]\n"
                                             "gone = 1\n"
                                             "[Last]\n"
                                             "a = no line end");
    ConfigFile config;
    ASSERT_TRUE(config.load(path, true, true));
    for (const auto& [key, expected] : std::map<std::string, std::string>{
             {"gige::A", "one = two"},
             {"GIGE::[X", "y"},
             {"GIGE::", "no key"},
             {"GIGE::LONG", std::string(100000, 'z')},
             {std::string("GIGE::NUL\0", 10), "1"},
             {"LAST::A", "no line end"},
             {"GIGE::GONE", ""},
             {"::GONE", ""},
         })
        EXPECT_EQ(config.value(key), expected) << key;
    bool found = false;
    EXPECT_EQ(config.value("GIGE::empty", &found), "");
    EXPECT_TRUE(found);
    config.value("GIGE::[", &found); // too short for a header, and no entry either
    EXPECT_FALSE(found);

    // Later files: kept or replaced entries, earlier or later assignments.
    const std::string next = file("next", "[GIGE]\nA=2\nB=3\n");
    ASSERT_TRUE(config.load(next, true, false));
    EXPECT_EQ(config.value("GIGE::A") + config.value("GIGE::B"), "one = two3");
    ASSERT_TRUE(config.load(next, false, true));
    EXPECT_EQ(config.value("GIGE::A") + config.value("LAST::A"), "2");
    EXPECT_FALSE(config.load(m_folder, false, true));
    EXPECT_EQ(config.value("GIGE::B"), "3");

    ConfigFile plain(false, true);
    ASSERT_TRUE(plain.load(path, true, true));
    EXPECT_EQ(plain.value("A"), "first");
    EXPECT_EQ(plain.value("a"), "no line end");
    EXPECT_EQ(plain.value("[x"), "y");
}

TEST(TweakPropertyTable, isTheOneThatTheRuntimeKnows)
{
    int rows = 0;
    std::uint64_t hash = 0xcbf29ce484222325; // FNV-1a over "key|variable|word|default\n" of each row
    for (const TweakPropertyRow* row = TweakPropertyTable; row->key != nullptr; ++row, ++rows)
        for (const char c : std::string(row->key) + '|' + row->environmentVariable + '|' +
                                row->commandLineWord + '|' + row->defaultValue + '\n')
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    EXPECT_EQ(rows, 52);
    EXPECT_EQ(hash, 0xc0eaca304efac88aU);
}

} // namespace
} // namespace kivo::templates::platform
