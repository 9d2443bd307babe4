#include "host/CaptureReader.h"
#include "host/OutgoingFrame.h"
#include "tests/host/ProgramRun.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <gmock/gmock.h>

#include <csignal>

// The program as it is run from a shell, with the plugin's binary and the emulated board behind it.

using mesk::host::CaptureReader;
using testing::HasSubstr;

namespace {

std::vector<QByteArray> framesOf(const std::string& path)
{
    std::vector<QByteArray> frames;
    CaptureReader reader(path);
    for (QByteArray frame; reader.next(frame);) {
        frames.push_back(frame);
    }
    return frames;
}

std::vector<QByteArray> sampleOnWire()
{
    std::vector<QByteArray> frames = framesOf(MESK_SAMPLE);
    for (QByteArray& frame : frames) {
        frame = mesk::host::prepareFrame(frame).onWire();
    }
    return frames;
}

const QString sample = QStringLiteral(MESK_SAMPLE);

TEST(Program, showsTheBoards)
{
    const Outcome run = runProgram(QStringLiteral("boards --json --link pair:0.1"));
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const json boards = run.result().at("boards");
    ASSERT_FALSE(boards.empty());
    EXPECT_EQ(boards[0].at("board"), 0);
    EXPECT_EQ(boards[0].at("links").size(), boards[0].at("ports"));
    EXPECT_EQ(boards[0].at("links")[1], "pair:0.0");
    EXPECT_THAT(runProgram(QStringLiteral("boards")).out, testing::StartsWith("BOARD  NAME"));
}

TEST(Program, relaysACaptureBothWaysWithoutADifference)
{
    const QTemporaryDir folder;
    const QString written = folder.filePath(QStringLiteral("seen.pcap"));
    const Outcome run = runProgram(QStringLiteral("relay --to 1 --json --write"), {written, sample});
    ASSERT_EQ(run.exitCode, 0) << run.out << run.err;
    const std::vector<QByteArray> onWire = sampleOnWire();
    ASSERT_EQ(onWire.size(), 96U);
    int bytes = 0;
    for (const QByteArray& frame : onWire) {
        bytes += frame.size();
    }
    const json result = run.result();
    EXPECT_THAT(result.at("statistics")[0].get<std::string>(),
                HasSubstr("board 0 port 0': Send - 96 frames"));
    for (const json& direction : result.at("directions")) {
        EXPECT_EQ(direction.at("sent"), 96);
        EXPECT_EQ(direction.at("received"), 96);
        EXPECT_EQ(direction.at("bytes"), bytes);
        EXPECT_EQ(direction.at("filledUp"), 61);
        for (const char* name : {"different", "lost", "refused"}) {
            EXPECT_EQ(direction.at(name), 0) << name;
        }
    }
    for (const json& port : result.at("ports")) {
        EXPECT_EQ(port.at("framesSent"), 96);
        EXPECT_EQ(port.at("framesReceived"), 96);
        EXPECT_EQ(port.at("framesDropped"), 0);
        EXPECT_EQ(port.at("crcErrors"), 0);
    }
    EXPECT_EQ(framesOf(written.toStdString()).size(), 2U * 96) << "what port 0 has sent and received";
}

TEST(Program, countsWhatTheBoardDroppedAsLost)
{
    QTemporaryFile setup;
    ASSERT_TRUE(setup.open());
    setup.write("[Board0]\nreceiveCapacity=200\npauseMs=0\n"); // less than a large frame takes
    setup.close();
    const Outcome run = runProgram(QStringLiteral("relay --to 1 --json --setup"), {setup.fileName(), sample});
    EXPECT_EQ(run.exitCode, 1) << run.err;
    const json result = run.result();
    for (const std::size_t side : {0U, 1U}) {
        const json& direction = result.at("directions")[side];
        const json& receiver = result.at("ports")[1 - side];
        EXPECT_GT(direction.at("lost"), 0);
        EXPECT_EQ(direction.at("lost"), receiver.at("framesDropped"));
        EXPECT_EQ(direction.at("received"), receiver.at("framesReceived"));
        EXPECT_EQ(direction.at("different"), 0);
    }
}

TEST(Program, sendsToAFileAndReceivesFromIt)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("wire.pcap"));
    const Outcome sent = runProgram(QStringLiteral("send --json"),
                                    {sample, QStringLiteral("--link"), QStringLiteral("file:,") + file});
    ASSERT_EQ(sent.exitCode, 0) << sent.err;
    EXPECT_EQ(sent.result().at("frames")[0].at("sent"), 96);
    const std::vector<QByteArray> onWire = sampleOnWire();
    EXPECT_EQ(framesOf(file.toStdString()), onWire);

    const QStringList replay = {QStringLiteral("--link"), QStringLiteral("file:") + file + QLatin1Char(',')};
    const Outcome received = runProgram(QStringLiteral("receive --json"), replay);
    ASSERT_EQ(received.exitCode, 0) << received.err;
    std::istringstream lines(received.out);
    std::vector<QByteArray> arrived;
    for (std::string line; std::getline(lines, line);) {
        const json record = json::parse(line);
        if (record.contains("data")) {
            arrived.push_back(QByteArray::fromHex(QByteArray::fromStdString(record.at("data"))));
        } else {
            EXPECT_THAT(record.at("statistics")[1].get<std::string>(), HasSubstr("Recv - 96 frames"));
        }
    }
    EXPECT_EQ(arrived, onWire);
    EXPECT_THAT(received.err, HasSubstr("96 frames, "));

    const Outcome counted = runProgram(QStringLiteral("receive --count 2 --quiet"), replay);
    EXPECT_EQ(counted.exitCode, 0);
    EXPECT_THAT(counted.out,
                HasSubstr("\n\nSTATISTICS OF PORT 0\nSend - 0 frames (0 bytes)\nRecv - 2 frames"));
    EXPECT_EQ(counted.err, "");
}

TEST(Program, saysWhatIsMissing)
{
    struct Refusal {
        const char* words;
        int exitCode;
        const char* text;
    };
    const QTemporaryDir folder;
    const Refusal refusals[] = {
        {"receive --board 7", 3,
         "mesk-phy: board 7 not found, boards present: 0, 1 (see 'mesk-phy boards')\n"},
        {"receive --port 4", 3, "mesk-phy: port 4 not found, board 0 has 4 GigE ports, counted from 0 (see"},
        {"events --seconds 0.1", 1, "0 events"},
        {"receive --link cable:0", 2, "mesk-phy: link 'cable:0': "},
        {"send /no/such.pcap", 2, "mesk-phy: /no/such.pcap: No such file"},
        {"send " MESK_PHY_FILE, 1, "no capture"},
        {"relay " MESK_SAMPLE " --to 0", 2, "--to 0"},
        {"relay " MESK_SAMPLE " --to 1 --link none", 2, "--link"},
        {"dump " MESK_PHY_FILE, 1, "no capture"},
        {"fly", 2, "(see 'mesk-phy --help')\n"},
    };
    for (const Refusal& refusal : refusals) {
        const Outcome run = runProgram(QString::fromLatin1(refusal.words));
        EXPECT_EQ(run.exitCode, refusal.exitCode) << refusal.words;
        EXPECT_EQ(run.out, "") << refusal.words;
        EXPECT_THAT(run.err, HasSubstr(refusal.text)) << refusal.words;
    }
    const Outcome rootless = runProgram(QStringLiteral("boards --root"), {folder.path()});
    EXPECT_EQ(rootless.exitCode, 3);
    EXPECT_THAT(rootless.err, HasSubstr("mesk-phy: board library not loaded: "));
    const Outcome silent = runProgram(QStringLiteral("report --root"), {folder.path()});
    EXPECT_EQ(silent.exitCode, 3);
    EXPECT_THAT(silent.err, HasSubstr("mesk-phy: no logging dispatcher: "));
}

TEST(Program, reportsLinesWithTheirLevels)
{
    const Outcome run = runProgram(QStringLiteral("report --json --log off"));
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const json lines = run.result().at("lines");
    ASSERT_GT(lines.size(), 20U);
    const json& first = lines.front();
    EXPECT_EQ(first.at("level"), 2);
    EXPECT_EQ(first.at("logger"), "kivo.core.mesk.KivoGbePhysicalNetworkInterface");
    EXPECT_THAT(first.at("text").get<std::string>(),
                testing::EndsWith("|PHY Id 'board 0 port 0' [START] DEBUG OUTPUT ..."));
    EXPECT_EQ(lines.back().at("level"), 3);
    EXPECT_EQ(run.err, "");
    const std::string table = runProgram(QStringLiteral("report --port 1")).out;
    EXPECT_THAT(table, testing::StartsWith("LEVEL  TEXT\n    2  [START] DEBUG OUTPUT ...\n"));
    EXPECT_THAT(table, HasSubstr("\n    3  Send - 0 frames (0 bytes)\n"));
}

TEST(Program, showsEventsAsTheyCome)
{
    QTemporaryFile setup;
    ASSERT_TRUE(setup.open());
    setup.write("[Board0]\nactionTimeoutsPerSecond1=50\n");
    setup.close();
    const Outcome run =
        runProgram(QStringLiteral("events --port 1 --seconds 0.5 --json --setup"), {setup.fileName()});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    std::istringstream lines(run.out);
    unsigned events = 0;
    unsigned before = 0;
    for (std::string line; std::getline(lines, line); ++events) {
        const json event = json::parse(line);
        EXPECT_EQ(event.at("type"), 8);
        EXPECT_GT(event.at("count"), before);
        before = event.at("count");
    }
    EXPECT_GT(events, 5U);
}

TEST(Program, dumpsAllThatStandsBeforeDamageAlsoFromAStream)
{
    const QTemporaryDir folder;
    QFile whole(sample);
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    QByteArray capture = whole.readAll();
    const auto dump = [](const QString& words, const QByteArray& input) {
        QProcess process;
        start(process, words.split(QLatin1Char(' ')));
        process.write(input);
        process.closeWriteChannel();
        return finished(process);
    };
    Outcome run = dump(QStringLiteral("dump - --json --verify"), capture);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 96);
    run = dump(QStringLiteral("dump - --json"), capture.chopped(1));
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 95);
    EXPECT_THAT(run.err, testing::StartsWith("mesk-phy: -: can't be read behind frame 95: "));
    capture.data()[capture.size() - 1] = static_cast<char>(capture.back() ^ 1);
    EXPECT_EQ(dump(QStringLiteral("dump -"), capture).exitCode, 0);
    run = dump(QStringLiteral("dump - --verify"), capture);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.err, HasSubstr("96 frames, 1 with a bad checksum"));
}

TEST(Program, leavesAStreamThatSaysNothingAtCtrlC)
{
    QProcess process;
    start(process, {QStringLiteral("dump"), QStringLiteral("-")});
    QFile whole(sample);
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    process.write(whole.read(24)); // the head of a capture
    ASSERT_TRUE(process.waitForReadyRead(10000)) << "the heading";
    ASSERT_EQ(process.state(), QProcess::Running);
    QElapsedTimer timer;
    timer.start();
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    const Outcome run = finished(process);
    EXPECT_LT(timer.elapsed(), 1000);
    EXPECT_EQ(run.exitCode, 130) << run.err;
}

TEST(Program, endsWithinASecondOfCtrlC)
{
    QProcess process;
    start(process, QStringLiteral("receive --link pair:0.1 --log 3").split(QLatin1Char(' ')));
    process.setReadChannel(QProcess::StandardError);
    std::string said; // the port is open once its log line is there
    while (said.find("successfully opened") == std::string::npos && process.waitForReadyRead(10000)) {
        said += process.readAllStandardError().toStdString();
    }
    // A process that has ended has the number 0, and that would reach this one.
    ASSERT_EQ(process.state(), QProcess::Running) << said;
    QElapsedTimer timer;
    timer.start();
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    const Outcome run = finished(process);
    EXPECT_LT(timer.elapsed(), 1000);
    EXPECT_EQ(run.exitCode, 130) << said << run.err;
    EXPECT_THAT(run.err, HasSubstr("0 frames, 0 bytes in "));
}

} // namespace
