#include "support/config/TweakProperties.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace kivo::templates::platform {
namespace {

using testing::HasSubstr;

/// A folder of files that goes with the test; the property's environment is clean before and after.
class TweakPropertiesTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::filesystem::remove_all(m_folder);
        std::filesystem::create_directories(m_folder);
        TearDown();
    }
    void TearDown() override
    {
        unsetenv("APPDATA");
        unsetenv(maskVariable);
        std::filesystem::remove(installationFile);
    }

    std::string file(const std::string& name, const std::string& text) const
    {
        const std::filesystem::path path = m_folder / name;
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    static constexpr const char* mask = "GIGE::DriverClassPortMask";
    static constexpr const char* maskVariable = "KIVO_GIGE_DRIVER_CLASS_PORT_MASK";
    // Of the root in which this program stands.
    const std::filesystem::path installationFile =
        std::filesystem::canonical("/proc/self/exe").parent_path().parent_path() / "rt.conf";
    const std::filesystem::path m_folder = std::filesystem::path(testing::TempDir()) / "mesk-tweak-test";
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
        const char* expected;
    };
    const char* const size = "Global::PCAPFileSizeLimit";
    const char* const none = nullptr;
    for (const Case& each : std::vector<Case>{
             {mask, {}, none, none, none, "0"},
             {mask, {}, none, none, "5", "5"},
             {mask, {}, "3", none, "5", "3"},
             {mask, {}, "3", "4", "5", "3"},
             {mask, {}, "abc", "7", "5", "7"},
             {mask, {}, "", "", "5", "5"},
             {mask, {}, none, "Off", "", "0"},
             {mask, {"=9", "x=9"}, none, none, none, "0"}, // no word: nothing of a command line counts
             {size, {"--PCAPLIMIT=9", "-pcaplimit=8", "pcaplimit=x"}, none, none, none, "8"},
             {size, {"pcapLimit=-12 rest"}, "3", none, none, "-12"},
             {size,
              {"pcaplimit", "---", "", "pcaplimit =1", "pcaplimit=", "pcaplimits=1", nullptr},
              "3",
              none,
              none,
              "3"},
             {mask, {}, "12abc", none, none, "12"},
             {mask, {}, "0x10", none, none, "0"},
             {mask, {}, "+2147483647", none, none, "2147483647"},
             {mask, {}, "2147483648", "-2147483648", none, "-2147483648"},
             {"global::enablepcap",
              {"pcap=1"},
              "1",
              none,
              none,
              "TweakProperties: Unknown property requested: 'global::enablepcap'"},
             {"Global::EnablePCAP",
              {"pcap=On"},
              "On",
              none,
              none,
              "TweakProperties: No valid value found for property 'Global::EnablePCAP'"},
             {"Nanoprobe::LogDir",
              {},
              none,
              none,
              none,
              "TweakProperties: No valid value found for property 'Nanoprobe::LogDir'"},
         }) {
        if (each.variable != nullptr)
            setenv(maskVariable, each.variable, 1);
        const auto path = [&](const char* fileName, const char* value) {
            std::string text = "[" + std::string(each.name) + "=";
            text.replace(text.find("::"), 2, "]\n");
            return value == nullptr ? std::string() : file(fileName, text.append(value));
        };
        TweakProperties store;
        EXPECT_EQ(outcome([&] {
                      return store.getProperty<std::int32_t>(
                          TweakPropertyTable, path("user", each.user), path("system", each.system), each.name,
                          static_cast<std::int32_t>(each.arguments.size()), each.arguments.data());
                  }),
                  each.expected)
            << each.name << " user " << (each.user != nullptr ? each.user : "-");
        unsetenv(maskVariable);
    }
}

TEST_F(TweakPropertiesTest, readsEachFileOncePerStoreAndAnewPerStore)
{
    const auto read = [&](TweakProperties& store) {
        return store.getProperty<std::int32_t>(TweakPropertyTable, m_folder / "user", m_folder / "system",
                                               mask, -1, nullptr);
    };
    TweakProperties store;
    file("system", "[GIGE]\nDriverClassPortMask=4");
    EXPECT_EQ(read(store), 4);
    file("user", "[GIGE]\nDriverClassPortMask=5");
    file("system", "[GIGE]\nDriverClassPortMask=6");
    std::thread other([&] { EXPECT_EQ(read(store), 4); });
    EXPECT_EQ(read(store), 4);
    other.join();
    TweakProperties next;
    EXPECT_EQ(read(next), 5);
}

TEST_F(TweakPropertiesTest, lookUpFindsTheFilesInTheirPlaces)
{
    const auto look = [] { return readTweakProperty<std::int32_t>(mask, 0, nullptr); };
    const std::filesystem::path data = m_folder / "data";
    std::filesystem::create_directory(data);
    setenv(maskVariable, "9", 1);
    EXPECT_EQ(look(), 9);
    std::ofstream(installationFile) << "[gige]\r\n driverclassportmask = 8 \r\n";
    EXPECT_EQ(look(), 8);
    setenv("APPDATA", data.c_str(), 1);
    EXPECT_EQ(look(), 8);
    EXPECT_TRUE(std::filesystem::is_directory(data / "kivo"));
    std::ofstream(data / "kivo" / "rt.conf") << "[GIGE]\nDriverClassPortMask=7";
    EXPECT_EQ(look(), 7);

    // A directory that can't be made, one in the file's place, and none at all: that file is passed over.
    setenv("APPDATA", (data / "missing" / "deeper").c_str(), 1);
    EXPECT_EQ(look(), 8);
    std::filesystem::create_directories(m_folder / "odd" / "kivo" / "rt.conf");
    setenv("APPDATA", (m_folder / "odd").c_str(), 1);
    EXPECT_EQ(look(), 8);
    setenv("APPDATA", "", 1);
    EXPECT_EQ(look(), 8);
    EXPECT_FALSE(std::filesystem::exists("/kivo"));
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

TEST(TweakPropertyTable, hasAllRowsAndEndsWithNulls)
{
    std::set<std::string> keys;
    const TweakPropertyRow* row = TweakPropertyTable;
    for (; row->key != nullptr; ++row) {
        EXPECT_THAT(row->key, HasSubstr("::"));
        EXPECT_NE(row->environmentVariable, nullptr);
        EXPECT_NE(row->commandLineWord, nullptr);
        EXPECT_NE(row->defaultValue, nullptr);
        keys.insert(row->key);
    }
    EXPECT_EQ(row - TweakPropertyTable, 52);
    EXPECT_EQ(keys.size(), 52U);
    EXPECT_STREQ(TweakPropertyTable[0].key, "Global::EnablePCAP");
    EXPECT_STREQ(TweakPropertyTable[51].defaultValue, "COM4");
    for (const auto& [name, expected] :
         std::map<std::string, int>{{"FG::LoadParametersNumRetries", 3},
                                    {"GIGE::CableDiagnosticTimeout", 4000},
                                    {"CXP::WaitAfterPowerup", 2000},
                                    {"Internal::NumberofTestPacketstoSend", 10000}})
        EXPECT_EQ(readTweakProperty<std::int32_t>(name, 0, nullptr), expected) << name;
}

} // namespace
} // namespace kivo::templates::platform
