#include "host/CommandLine.h"
#include "host/verbs/VerbTable.h"

#include <gmock/gmock.h>

#include <sstream>

using namespace mesk::host;
using testing::HasSubstr;

namespace {

CommandLine parse(const std::string& words)
{
    std::istringstream stream(words);
    return parseCommandLine({std::istream_iterator<std::string>(stream), {}});
}

TEST(CommandLine, takesOptionsBeforeAndBehindTheVerb)
{
    for (const char* words :
         {"--board 1 --port 2 --json --reset boards", "boards --board 1 --port=2 --json --reset",
          "--board 1 boards --json --reset --port 2"}) {
        const CommandLine line = parse(words);
        ASSERT_NE(line.verb, nullptr) << line.error;
        EXPECT_EQ(line.options.board, 1) << words;
        EXPECT_EQ(line.options.port, 2) << words;
        EXPECT_TRUE(line.options.json && line.options.reset && !line.options.quiet) << words;
    }
    const CommandLine line =
        parse("receive --count 3 --seconds 0.5 --mac 02:4B:00:00:00:0f --ip 10.1.2.3/8 --log detail");
    ASSERT_NE(line.verb, nullptr) << line.error;
    EXPECT_EQ(line.options.ownMac().toStdString(":"), "02:4b:00:00:00:0f");
    EXPECT_EQ(line.options.ownAddress().address.toUInt32(), 0x0a010203U);
    EXPECT_EQ(line.options.ownAddress().prefixBits, 8U);
    EXPECT_EQ(parse("boards --log 4").options.logLevel, "4");
}

TEST(CommandLine, refusesWhatItCannotUse)
{
    struct Refusal {
        const char* words;
        const char* text;
    };
    const Refusal refusals[] = {
        {"", "verb is required (see 'mesk-phy --help')"},
        {"fly", "fly"},
        {"boards boards2", "boards2"},
        {"boards --fast", "--fast"},
        {"boards --board -1", "--board"},
        {"boards --board one", "--board"},
        {"boards --port 4294967296", "--port"},
        {"boards --setup /no/such/file.ini", "/no/such/file.ini"},
        {"boards --root /no/such/folder", "/no/such/folder"},
        {"boards --mac abcdef", "abcdef"},
        {"boards --mac 02-4b-00-00-00-01", "--mac"},
        {"boards --mac 01:00:5e:00:00:01", "one station"},
        {"boards --ip 192.168.77.1", "--ip"},
        {"boards --ip 192.168.77.256/24", "--ip"},
        {"boards --ip 192.168.77.1/33", "--ip"},
        {"boards --ip 192.168..1/24", "--ip"},
        {"boards --log loud", "loud"},
        {"boards --log 8", "--log"},
        {"send", "CAPTURE is required (see 'mesk-phy send --help')"},
        {"relay " MESK_SAMPLE, "--to is required"},
        {"relay /no/such.pcap --to 1", "/no/such.pcap"},
        {"receive --count 0", "--count"},
        {"receive --seconds 0", "--seconds"},
        {"receive --seconds nan", "--seconds"},
        {"receive --seconds -1", "--seconds"},
    };
    for (const Refusal& refusal : refusals) {
        const CommandLine line = parse(refusal.words);
        EXPECT_EQ(line.verb, nullptr) << refusal.words;
        EXPECT_EQ(line.exitCode, ExitCode::Usage) << refusal.words;
        EXPECT_THAT(line.error, HasSubstr(refusal.text)) << refusal.words;
    }
}

TEST(CommandLine, helpOfEachVerbStartsWithExamplesAndListsExitCodes)
{
    std::vector<std::string> helps = {"--help"};
    for (const VerbEntry& entry : verbTable()) {
        helps.push_back(std::string(entry.name) + " --help");
        EXPECT_THAT(parse("--help").output, HasSubstr(entry.name));
    }
    for (const std::string& words : helps) {
        const CommandLine line = parse(words);
        EXPECT_EQ(line.exitCode, ExitCode::Done);
        EXPECT_THAT(line.output, testing::StartsWith("Examples:\n  mesk-phy ")) << words;
        EXPECT_THAT(line.output, HasSubstr("130 interrupted")) << words;
    }
}

} // namespace
