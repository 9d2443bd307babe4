#include "host/CaptureReader.h"
#include "host/CommandLine.h"
#include "host/verbs/VerbTable.h"
#include "tests/host/ProgramRun.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <map>
#include <set>
#include <sstream>

// The verbs that speak a protocol, with the emulated camera at the far end of the port.

using testing::HasSubstr;

namespace {

/// Runs the words with the camera, set up as told, and expects an exit code.
Outcome runWithCamera(const char* words, const char* camera = "", int exitCode = 0)
{
    Outcome run = runProgram(QString::fromLatin1(words) + QLatin1String(" --json --link camera:") +
                             QLatin1String(camera));
    EXPECT_EQ(run.exitCode, exitCode) << words << "\n" << run.err;
    return run;
}

std::vector<json> records(const Outcome& run)
{
    std::vector<json> all;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);) {
        all.push_back(json::parse(line));
    }
    return all;
}

TEST(Verbs, findReadAndWriteTheCamera)
{
    const json device =
        runWithCamera("discover", "name=Left,address=192.168.77.9/24").result().at("devices").at(0);
    EXPECT_EQ(device.at("address"), "192.168.77.9");
    EXPECT_EQ(device.at("mac"), "02:4b:00:01:00:00");
    EXPECT_EQ(device.at("name"), "Left");
    EXPECT_THAT(runWithCamera("discover --wait 0.3", "silent", 1).err, HasSubstr("no device answers"));

    const json read = runWithCamera("read 0x938 2560").result();
    EXPECT_EQ(read.at("device"), "192.168.77.20");
    EXPECT_EQ(read.at("registers")[0].at("number"), 3000);
    EXPECT_EQ(read.at("registers")[1],
              json::parse(R"({"address":"0x00000a00","value":"0x00000000","number":0})"));
    EXPECT_THAT(runWithCamera("read 0xfffffff0", "", 1).err, HasSubstr("invalid address (0x8003)"));
    EXPECT_THAT(runWithCamera("read 0 --device 192.168.77.21", "", 1).err,
                HasSubstr("192.168.77.21 does not answer"));
    EXPECT_EQ(runWithCamera("write 0x938 0x1388").result().at("registers")[0].at("number"), 5000);
    EXPECT_THAT(runWithCamera("write 0 1", "", 1).err, HasSubstr("write-protected (0x8004)"));
    EXPECT_EQ(runWithCamera("write-memory 0xe8 6e616d65").result().at("memory")[0].at("count"), 4);
    EXPECT_THAT(runWithCamera("write-memory 0xe8 6e616d", "", 2).err, HasSubstr("whole words"));
    EXPECT_THAT(runWithCamera("write-memory 0xe8 6e6z", "", 2).err, HasSubstr("hexadecimal"));
}

TEST(Verbs, readTheSameMemoryThroughABadNet)
{
    const char* words = "read-memory 0x10000 2001 --device 192.168.77.20";
    const json clean = runWithCamera(words).result();
    EXPECT_EQ(clean.at("data").get<std::string>().size(), 4002U);
    EXPECT_EQ(runWithCamera(words, "seed=5,loss=0.2,duplicates=0.3,wrong-ids=0.2,cut=0.2").result(), clean);
    EXPECT_EQ(runWithCamera(words, "pending=60").result(), clean);
}

TEST(Verbs, pingAndResolveTheCamera)
{
    const json ping = runWithCamera("ping 192.168.77.20 --count 3 --interval 0.1 --size 1472").result();
    EXPECT_EQ(ping.at("received"), 3);
    EXPECT_EQ(ping.at("replies")[2].at("bytes"), 1472);
    EXPECT_EQ(runWithCamera("ping 192.168.77.20 --count 1", "silent", 1).result().at("lossPercent"), 100);
    EXPECT_EQ(runWithCamera("arp 192.168.77.20").result().at("mac"), "02:4b:00:01:00:00");
    EXPECT_EQ(runWithCamera("arp 192.168.77.21 --probe", "", 1).result().at("mac"), nullptr);
}

TEST(Verbs, giveTheCameraALease)
{
    const auto changes =
        records(runWithCamera("dhcp-server --pool 192.168.77.100-192.168.77.109 --seconds 1", "dhcp"));
    ASSERT_EQ(changes.size(), 2U);
    EXPECT_EQ(changes[1].at("change"), "bound");
    EXPECT_EQ(changes[1].at("address"), "192.168.77.100");
    for (const char* pool :
         {"192.168.77.1-192.168.77.9", "192.168.78.1-192.168.78.9", "192.168.77.200-192.168.77.255"})
        EXPECT_THAT(runWithCamera((std::string("dhcp-server --pool ") + pool).c_str(), "", 2).err,
                    HasSubstr("--pool"));
}

TEST(Verbs, playTheCamera)
{
    const Outcome run = runProgram(
        QStringLiteral("camera address=10.0.0.9/8 --seconds 1 --json --link none --mac 02:00:00:00:00:07"));
    EXPECT_EQ(run.exitCode, 1) << "nobody asked it anything: " << run.err;
    const auto all = records(run);
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].at("value"), "10.0.0.9/8 (persistent)");
    EXPECT_GT(all[1].at("statistics").at("framesOut"), 1) << "who claims an address asks for it first";
    EXPECT_THAT(runProgram(QStringLiteral("camera flying")).err, HasSubstr("SETUP: "));
}

TEST(Verbs, tourEndsWithEveryStepDone)
{
    const QTemporaryDir folder;
    const QString capture = folder.filePath(QStringLiteral("tour.pcap"));
    const Outcome run = runProgram(QStringLiteral("tour --json --write"), {capture});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const json result = run.result();
    EXPECT_EQ(result.at("steps").size(), 9U);
    for (const json& step : result.at("steps")) {
        EXPECT_EQ(step.at("result"), "done") << step;
    }
    const json& port = result.at("ports")[0];
    mesk::host::CaptureReader reader(capture.toStdString());
    QByteArray frame;
    std::uint64_t frames = 0;
    while (reader.next(frame)) {
        ++frames;
    }
    EXPECT_EQ(frames,
              port.at("framesSent").get<std::uint64_t>() + port.at("framesReceived").get<std::uint64_t>());
    EXPECT_THAT(result.at("statistics")[0].get<std::string>(), HasSubstr("Send - "));
}

TEST(Verbs, tourSaysWhichStepFailed)
{
    const QTemporaryDir folder;
    const Outcome run = runProgram(QStringLiteral("tour --json --link none --ip 192.168.77.1/32 --write"),
                                   {folder.filePath(QStringLiteral("tour.pcap"))});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.err, HasSubstr("mesk-phy: tour: the step 'discovery' failed: no device answers\n"));
    const json steps = run.result().at("steps");
    ASSERT_EQ(steps.size(), 3U);
    EXPECT_EQ(steps[1].at("result"), "skipped");
    EXPECT_EQ(steps[2].at("result"), "failed");
}

TEST(Verbs, sendAnActionToWhoHasItsKeys)
{
    const auto act = [](const char* camera, int exitCode) {
        return runWithCamera("action --device-key 7 --group-key 0x10 --group-mask 6", camera, exitCode)
            .result()
            .at("devices");
    };
    const json answer = {{"address", "192.168.77.20"}, {"status", "success (0x0000)"}};
    EXPECT_EQ(act("action=7/16/0xc", 0), json::array({answer})) << "also of a camera that has just started";
    EXPECT_EQ(act("action=7/16/1", 1), json::array());
    EXPECT_THAT(runWithCamera("discover", "action=7/16", 2).err,
                HasSubstr("'action=7/16': not a device key"));
}

/// The examples of a help. What a pipe does with the result is left out.
std::vector<QString> examplesOf(const std::vector<std::string>& words)
{
    const QString help = QString::fromStdString(mesk::host::parseCommandLine(words).output);
    std::vector<QString> examples;
    for (const QString& line : help.section(QLatin1String("\n\n"), 0, 0).split(QLatin1Char('\n')).mid(1))
        examples.push_back(
            line.mid(line.indexOf(QLatin1String("mesk-phy"))).section(QLatin1String(" | "), 0, 0));
    return examples;
}

TEST(Verbs, helpShowsExamplesThatWork)
{
    const QTemporaryDir folder; // a user's, who has captures
    ASSERT_TRUE(
        QFile::link(QStringLiteral(MESK_SOURCE_DIR "/samples"), folder.filePath(QStringLiteral("samples"))));
    for (const QString& own : {QStringLiteral("session.pcap"), QStringLiteral("session.pcapng")})
        ASSERT_TRUE(QFile::link(QStringLiteral(MESK_SAMPLE), folder.filePath(own)));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TMPDIR"), folder.path());

    // Those that need a peer on a network interface or the input of others, or go on for a minute.
    const QRegularExpression notHere(QStringLiteral("interface:|tap:| - |--seconds 60"));
    std::set<QString> done;
    std::set<std::string> verbsWithout;
    std::vector<std::vector<std::string>> helps = {{"--help"}};
    for (const auto& entry : mesk::host::verbTable())
        helps.push_back({entry.name, "--help"});
    for (const auto& words : helps) {
        std::map<std::string, QProcess> runs;
        for (const QString& example : examplesOf(words)) {
            const QStringList arguments = example.split(QLatin1Char(' ')).mid(1);
            if (!notHere.match(example).hasMatch() && done.insert(example).second) {
                QProcess& run = runs[example.toStdString()];
                run.setWorkingDirectory(folder.path());
                run.setProcessEnvironment(environment);
                start(run, arguments);
            } else if (done.count(example) == 0) {
                std::vector<std::string> parsed;
                for (const QString& word : arguments)
                    parsed.push_back(word.toStdString());
                EXPECT_NE(mesk::host::parseCommandLine(parsed).verb, nullptr) << example.toStdString();
            }
        }
        if (runs.empty())
            verbsWithout.insert(words.front());
        for (auto& [example, run] : runs) {
            const Outcome outcome = finished(run);
            EXPECT_EQ(outcome.exitCode, 0) << example << "\n" << outcome.err;
        }
    }
    // "tour" is an example of the program itself; those of the others run in tests/peers.
    EXPECT_EQ(verbsWithout, (std::set<std::string>{"camera", "dhcp-client", "tour"}));
}

} // namespace
