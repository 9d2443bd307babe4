#include "tests/stand-ins/camera/CameraBench.h"

#include <QList>
#include <pcap/pcap.h>

// What is expected are bytes that other devices sent, or that the public layout of GigE Vision says.
namespace {

/// Replays what clients sent in a recording of a device that had the given MAC address.
/// @param use is called with each recorded answer of that device, and the one that was given here.
template <typename Use>
void replay(const char* name, CameraBench& bench, const QByteArray& mac, Use use)
{
    char error[PCAP_ERRBUF_SIZE] = "";
    const std::unique_ptr<pcap_t, decltype(&pcap_close)> pcap(
        pcap_open_offline((std::string(CAPTURES_DIR "/") + name).c_str(), error), &pcap_close);
    ASSERT_TRUE(pcap) << error;
    pcap_pkthdr* header = nullptr;
    const u_char* bytes = nullptr;
    std::vector<QByteArray> answers;
    while (pcap_next_ex(pcap.get(), &header, &bytes) == 1) {
        const QByteArray frame(reinterpret_cast<const char*>(bytes), int(header->caplen));
        if (frame.mid(6, 6) != mac) {
            bench.camera.receive(frame, bench.now);
            const std::vector<QByteArray> more = bench.heard();
            answers.insert(answers.end(), more.begin(), more.end());
            continue;
        }
        const QByteArray recorded = UdpPacket(IPv4Packet(frame.mid(14)).payload()).payload();
        if (frame.mid(12, 2) != hex("0800") || recorded.size() < 8)
            continue;
        // By code and id.
        const auto found = std::find_if(answers.begin(), answers.end(), [&](const QByteArray& each) {
            return each.mid(2, 2) == recorded.mid(2, 2) && each.mid(6, 2) == recorded.mid(6, 2);
        });
        use(recorded, found != answers.end() ? *found : QByteArray());
        if (found != answers.end())
            answers.erase(found);
    }
}

TEST(CameraCommands, statusesAreThoseOfARecordedDevice)
{
    CameraBench bench("mac=02:4b:00:00:00:62,address=10.77.1.98/24");
    int compared = 0;
    replay("gvcp_statuses.pcap", bench, hex("024b00000062"),
           [&](const QByteArray& recorded, const QByteArray& own) {
               const quint16 id = readField<quint16>(recorded, 6);
               // There arv-tool talked to features at other addresses, and there were no actions and a slow
               // register.
               const bool hasOwnAddresses = id > 0xff00 || id == 12 || id == 15 || id == 22;
               if (hasOwnAddresses)
                   return;
               ++compared;
               EXPECT_EQ(own.left(4), recorded.left(4)) << id;
               EXPECT_EQ(own.size(), recorded.size()) << id;
               const quint16 code = readField<quint16>(recorded, 2);
               const bool tellsHowMuch = code == 0x83 || code == 0x87;
               EXPECT_TRUE(!tellsHowMuch || own == recorded) << id;
           });
    EXPECT_EQ(compared, 25);
}

TEST(CameraCommands, recordedClientsAreAnswered)
{
    const auto answered = [](const char* name) {
        CameraBench bench("address=10.77.1.20/24");
        std::pair<int, int> counts; // answered, and not
        replay(name, bench, hex("024b00000020"), [&](const QByteArray&, const QByteArray& own) {
            ++(own.isEmpty() ? counts.second : counts.first);
        });
        return counts;
    };
    EXPECT_EQ(answered("gvcp_arv_tool.pcap"), std::make_pair(47, 0));
    // The recorded device also answers a wrong length, id 0, and a write whose flag says not to.
    EXPECT_EQ(answered("gvcp_raw_client.pcap"), std::make_pair(34, 3));
}

TEST(CameraCommands, discoveryTellsTheFirstRegisters)
{
    const QByteArray block =
        hex("00020000 80000001 0000024b 00000020 00000007 00000005") + QByteArray(12, '\0') +
        hex("c0a84d14") + QByteArray(12, '\0') + hex("ffffff00") + QByteArray(16, '\0') +
        QByteArray("Emulated").leftJustified(32, '\0') + QByteArray("EC-1").leftJustified(32, '\0') +
        QByteArray("1.0").leftJustified(32, '\0') +
        QByteArray("emulated device without a stream").leftJustified(48, '\0') +
        QByteArray("S7").leftJustified(16, '\0') + QByteArray("left").leftJustified(16, '\0');
    CameraBench bench("serial=S7,name=left");
    EXPECT_THAT(bench.ask(hex("42010002 0000 0005")), ElementsAre(hex("00000003 00f8 0005") + block));
    EXPECT_THAT(bench.ask(hex("42000002 0000 0005")), IsEmpty());
    // Where the answer goes: to the client; to all if it says so or is in another net.
    const auto addressees = [&bench](const char* message, const Client& client, bool broadcast = true) {
        bench.sent.clear();
        bench.tell(hex(message), client, broadcast);
        return bench.sent.at(0).left(6) + bench.sent.at(0).mid(30, 4);
    };
    EXPECT_EQ(addressees("42010002 0000 0006", {}), hex("024b00000001 c0a84d01"));
    EXPECT_EQ(addressees("42110002 0000 0007", {}), hex("ffffffffffff ffffffff"));
    EXPECT_EQ(addressees("42010002 0000 0008", {Client().mac, ip("10.0.0.1"), 9}),
              hex("ffffffffffff ffffffff"));
    EXPECT_EQ(addressees("42010080 0004 0009 00000000", {Client().mac, ip("10.0.0.1"), 9}, false),
              hex("024b00000001 0a000001")); // by a router
}

TEST(CameraCommands, descriptionStandsWhereTheFirstUrlSays)
{
    for (const bool zipped : {false, true}) {
        CameraBench bench(zipped ? "zip" : "");
        const QList<QByteArray> url = bench.command("0084 00000200 00000200").mid(8).split(';');
        ASSERT_EQ(url.size(), 3);
        EXPECT_EQ(url[0], zipped ? "Local:emulated-camera.zip" : "Local:emulated-camera.xml");
        EXPECT_EQ(url[1], "10000");
        const int size = url[2].left(url[2].indexOf('\0')).toInt(nullptr, 16);
        QByteArray file;
        for (quint32 at = 0x10000; file.size() < size; at += 512) {
            const int part = std::min(512, (size - file.size() + 3) / 4 * 4);
            const QByteArray where =
                byteArrayFromUInt32(qToBigEndian(at)) + byteArrayFromUInt32(qToBigEndian(quint32(part)));
            const QByteArray answer = bench.command(("0084" + where.toHex()).constData());
            ASSERT_EQ(answer.left(2), hex("0000"));
            file += answer.mid(8);
        }
        EXPECT_TRUE(file.startsWith(zipped ? "PK\3\4" : "<?xml"));
        EXPECT_EQ(file.contains("</RegisterDescription>"), !zipped);
    }
}

TEST(CameraCommands, registersHaveTheirRights)
{
    struct Exchange {
        const char* command;
        const char* answer;
    };
    CameraBench bench;
    for (const Exchange& each : std::vector<Exchange>{
             {"0082 00000a00 00000002", "0000 0083 00000001"}, // take control
             {"0080 00000a00 00000a04 00000a14", "0000 0081 00000002 0000c350 c0a84d01"},
             {"0082 0000a000 00000400 0000a004 00000300", "0000 0083 00000002"}, // the largest image
             {"0082 0000a000 00000401", "8002 0083 00000000"},
             {"0082 0000a008 01080002", "8002 0083 00000000"},          // no pixel format
             {"0086 0000a000 00000010 00000301", "8002 0087 00000000"}, // all or nothing
             {"0080 0000a000", "0000 0081 00000400"},
             {"0082 0000a010 00000001", "0000 0083 00000001"}, // while it acquires
             {"0082 0000a000 00000010", "8007 0083 00000000"},
             {"0082 0000a014 00000001 0000a000 00000010", "0000 0083 00000002"},
             // Write-only registers and reserved ones read 0.
             {"0080 0000a018 0000a014 0000a00c", "0000 0081 00000000 00000000 00000000"},
             {"0082 0000a00c 00000000", "8004 0083 00000000"},
             {"0082 00000938 000001f3", "8002 0083 00000000"}, // below 500 ms
             {"0086 0000b0fc 11223344", "0000 0087 00000004"}, // the user block's last word
             {"0084 0000b0f8 00000008", "0000 0085 0000b0f8 00000000 11223344"},
             {"0084 0000b0fc 00000008", "8003 0085"},
             {"0086 fffffffc 00000000 00000000", "8003 0087 00000000"},          // would go on at 0
             {"0082 00000944 00000001 00000944 00000002", "0000 0083 00000002"}, // timestamp: reset, latch
             {"0080 00000948 0000094c 0000093c 00000940", "0000 0081 00000000 00000000 00000000 3b9aca00"},
             {"0082 00000014 00000001", "0000 0083 00000001"}, // without the last choice
             {"0080 00000014 0000064c", "0000 0081 00000005 c0a84d14"},
             {"0082 0000a000", "8002 0083 00000000"},
             {"0084 00000048", "8002 0085"},
             {"7ffe", "8001 7fff"},
             {"0040 00000001 00000001 00000003", ""},
         })
        EXPECT_EQ(bench.command(each.command), hex(each.answer)) << each.command;
    EXPECT_EQ(bench.camera.counters().acknowledges[0x8002], 6U);
    // As many as a packet has room for.
    for (const int count : {135, 136}) {
        const QByteArray read = "0080" + QByteArray("00000000").repeated(count);
        EXPECT_EQ(bench.command(read.constData()).size(), count == 135 ? 4 + 540 : 4);
    }

    // Executed without being answered, or no command at all.
    EXPECT_EQ(bench.command("0082 0000b000 55667788", {}, "4200"), "");
    EXPECT_EQ(bench.command("0080 0000b000"), hex("0000 0081 55667788"));
    for (const char* ignored :
         {"43010080 0004 0001 00000000", "42010080 0008 0001 00000000", "42010081 0000 0001",
          "42010080 0004 0000 00000000", "4201", "000000c1 0000 0001"})
        EXPECT_THAT(bench.ask(hex(ignored)), IsEmpty()) << ignored;
    EXPECT_THAT(bench.ask(hex("42010080 0004 0001 00000000"), {}, true),
                IsEmpty()); // not to this device alone
    EXPECT_THAT(bench.ask(hex("42010080 0004 0001 00000000"), {Client().mac, {}, 7}), IsEmpty());

    // Without power all is as before, but what is to stay.
    bench.command("0086 000000e8 6b657074 00000000");
    bench.camera.powerOn(bench.now);
    bench.pass(1s);
    EXPECT_EQ(bench.command("0080 000000e8 0000b000 0000a000 00000a00"),
              hex("0000 0081 6b657074 00000000 00000280 00000000"));
}

TEST(CameraCommands, privilegeKeepsOthersOutUntilTheHeartbeatStops)
{
    CameraBench bench;
    const Client other{{0x02, 0x4b, 0, 0, 0, 2}, ip("192.168.77.2"), 50000};
    const QByteArray done = hex("0000 0083 00000001");
    const QByteArray denied = hex("8006 0083 00000000");
    EXPECT_EQ(bench.command("0082 0000b000 00000001"), denied);
    EXPECT_EQ(bench.takeControl(), done);
    EXPECT_EQ(bench.command("0082 00000a00 00000002", other), denied);
    EXPECT_EQ(bench.command("0082 00000a00 00000000", other), denied);
    EXPECT_EQ(bench.command("0080 0000a000", other), hex("0000 0081 00000280"));
    EXPECT_EQ(bench.command("0082 00000a00 00000001"),
              done); // exclusive: others may read this register alone
    EXPECT_EQ(bench.command("0080 00000a00 0000a000", other), hex("8006 0081 00000001"));
    EXPECT_EQ(bench.command("0084 00000048 00000020", other), hex("8006 0085"));
    EXPECT_EQ(bench.command("0082 00000a00 12340005"), done);
    EXPECT_EQ(bench.command("0082 00000a00 12340002", other), denied);
    EXPECT_EQ(bench.command("0082 00000a00 12340006"), done); // who has the key takes over
    EXPECT_EQ(bench.command("0082 00000a00 12350002", other), denied);
    EXPECT_EQ(bench.command("0082 00000a00 12340002", other), done);
    EXPECT_EQ(bench.takeControl(), denied);
    EXPECT_EQ(bench.command("0082 00000b00 00001234", other), done);
    EXPECT_EQ(bench.command("0082 00000a00 00000000", other), done);
    EXPECT_EQ(bench.command("0080 00000a00 00000a14 00000b00"), hex("0000 0081 00000000 00000000 00000000"));

    EXPECT_EQ(bench.takeControl(), done);
    bench.pass(2999ms);
    bench.command("0080 00000a00"); // the heartbeat; another one's command is none
    bench.pass(2000ms);
    bench.command("0080 00000a00", other);
    bench.pass(999ms);
    EXPECT_TRUE(bench.camera.controller());
    bench.pass(1ms);
    EXPECT_FALSE(bench.camera.controller());
    EXPECT_EQ(bench.camera.counters().heartbeatsLost, 1U);
    bench.takeControl();
    bench.command("0082 00000954 00000001"); // no heartbeat wanted
    bench.pass(1h);
    EXPECT_TRUE(bench.camera.controller());
}

TEST(CameraCommands, repeatedCommandIsAnsweredButNotExecutedAgain)
{
    CameraBench bench;
    bench.takeControl();
    const Client reader{{0x02, 0x4b, 0, 0, 0, 2}, ip("192.168.77.2"), 7};
    const auto latched = [&] { return bench.command("0080 0000094c", reader).mid(4); };
    const QByteArray latch = hex("42010082 0008 0004 00000944 00000002");
    bench.ask(latch);
    const QByteArray first = latched();
    bench.pass(1s);
    EXPECT_THAT(bench.ask(latch), ElementsAre(hex("00000083 0004 0004 00000001")));
    bench.command("0080 00000a00"); // a sign of life in between
    bench.ask(latch);
    EXPECT_EQ(latched(), first);
    EXPECT_EQ(bench.camera.counters().retransmissions, 2U);
    bench.pass(1001ms); // too late for a repetition
    bench.ask(latch);
    const QByteArray second = latched();
    EXPECT_NE(second, first);
    bench.pass(1s);
    bench.ask(hex("42010082 0008 0004 00000944 00000003")); // the same id, another command
    const QByteArray third = latched();
    EXPECT_NE(third, second);
    bench.pass(1s);
    bench.ask(latch); // as before that one, but after a client's new beginning
    EXPECT_NE(latched(), third);
}

TEST(CameraCommands, slowAnswersArePending)
{
    CameraBench bench("pending=300");
    const QByteArray read = hex("42010080 0004 0009 0000a000");
    EXPECT_THAT(bench.ask(read),
                ElementsAre(hex("00000089 0004 0009 00000190"))); // 100 ms more than it takes
    bench.pass(200ms);
    for (int i = 0; i < 3; ++i)
        bench.command("0080 00000a00"); // between a command and its repetition
    EXPECT_THAT(bench.ask(read), ElementsAre(hex("00000089 0004 0009 000000c8")));
    bench.pass(99ms);
    EXPECT_THAT(bench.heard(), IsEmpty());
    bench.pass(1ms);
    EXPECT_THAT(bench.heard(), ElementsAre(hex("00000081 0004 0009 00000280")));
    EXPECT_THAT(bench.ask(read), ElementsAre(hex("00000081 0004 0009 00000280")));
    bench.pass(300ms);
    // No more answers are under way than there is room for.
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_EQ(bench.command("0080 0000a000").left(4), hex("0000 0089"));
    EXPECT_EQ(bench.command("0080 0000a000"), hex("8007 0081"));
    bench.pass(300ms);
    EXPECT_EQ(bench.heard().size(), 16U);
}
} // namespace
