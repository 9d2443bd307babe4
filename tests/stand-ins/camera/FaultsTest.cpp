#include "tests/stand-ins/camera/CameraBench.h"

namespace {
std::vector<QByteArray> framesUnder(const std::string& faults)
{
    CameraBench bench(faults, false);
    for (int i = 0; i < 200; ++i) {
        bench.pass(10ms);
        bench.tell(hex("42010002 0000 0005"), {}, true);
    }
    return bench.sent;
}

TEST(CameraFaults, areDrawnByTheSeed)
{
    const std::string all = "loss=0.2,duplicates=0.2,wrong-ids=0.2,cut=0.2,seed=";
    EXPECT_EQ(framesUnder(all + "7"), framesUnder(all + "7"));
    EXPECT_NE(framesUnder(all + "7"), framesUnder(all + "8"));
    const std::size_t whole = framesUnder({}).size();
    EXPECT_EQ(framesUnder("duplicates=1").size(), 2 * whole);
    EXPECT_THAT(framesUnder("loss=1"), IsEmpty());
    EXPECT_THAT(framesUnder("silent"), IsEmpty());
    EXPECT_NEAR(double(framesUnder("loss=0.5").size()), double(whole) / 2, double(whole) / 8);
}

TEST(CameraFaults, spoilAcknowledgesAlone)
{
    const QByteArray discovery = hex("42010002 0000 0005");
    CameraBench wrong("wrong-ids=1");
    CameraBench cut("cut=1");
    for (int i = 0; i < 50; ++i) {
        EXPECT_NE(wrong.ask(discovery).at(0).mid(6, 2), hex("0005"));
        EXPECT_LT(cut.ask(discovery).at(0).size(), 256);
    }
    EXPECT_EQ(wrong.camera.counters().wrongIds, 50U);
    EXPECT_EQ(cut.camera.counters().acknowledgesCut, 50U);
    CameraBench late("delay=40");
    EXPECT_THAT(late.ask(discovery), IsEmpty());
    late.pass(39ms);
    EXPECT_THAT(late.heard(), IsEmpty());
    late.pass(1ms);
    EXPECT_EQ(late.heard().size(), 1U);
    for (int i = 0; i < 1000; ++i)
        late.tell(discovery);
    late.pass(1s);
    EXPECT_EQ(late.heard().size(), 256U); // the room there is
}

TEST(CameraFaults, setupIsReadOrRefusedWithItsReason)
{
    const CameraSetup setup = parseCameraSetup(
        "dhcp,mac=02:00:00:00:00:07,serial=S,name=N,pending=5,zip,events=2.5,seed=0x10,cut=1,delay=9,silent",
        {});
    EXPECT_EQ(setup.start, CameraSetup::Start::Dhcp);
    EXPECT_EQ(setup.mac, MacAddress(2, 0, 0, 0, 0, 7));
    EXPECT_TRUE(setup.zippedDescription && setup.faults.silent && setup.pendingAfter == 5ms);
    EXPECT_EQ(setup.serialNumber + setup.userName, "SN");
    EXPECT_EQ(setup.eventsPerSecond, 2.5);
    EXPECT_TRUE(setup.faults.seed == 16 && setup.faults.cut == 1 && setup.faults.delay == 9ms);
    EXPECT_EQ(parseCameraSetup("address=10.0.0.5/8", {}).persistentAddress.address, ip("10.0.0.5"));
    for (const char* bad : {"zip=1", "loss", "loss=1.1", "loss=-0.1", "loss=nan", "delay=1h", "speed=9",
                            "mac=abcdef", "mac=03:00:00:00:00:07", "address=10.0.0.5", "address=10.0.0.5/31",
                            "address=abcd/8", "seed=4294967296", "serial=sixteen-bytes-ok", "events=1001"})
        EXPECT_THAT([bad] { parseCameraSetup(bad, {}); },
                    testing::ThrowsMessage<std::runtime_error>(testing::HasSubstr("': ")))
            << bad;
}

TEST(CameraHostility, damagedAndSpoofedFramesLeaveADeviceThatWorks)
{
    CameraBench bench("pending=1,events=100");
    bench.takeControl();
    for (const char* message :
         {"42010002 0000 0005", "42010080 000c 0001 000000000000093800000a00",
          "42010082 0010 0002 00000b0000001234 00000b10c0a84d09", "42010084 0008 0003 00000000 000000f8",
          "42010086 000c 0004 0000b000 0102030405060708", "420100820008 0005 0000a020 00019001",
          "42010100 000c 0006 00000000 00000000 ffffffff",
          "42010004 0038 0007 0000024b00000020 000000000000000000000000 00000000", "000000c1 0000 0001"}) {
        bench.heard();
        UdpPacket udp(50000, 3956, hex(message), true);
        IPv4Packet packet(ip("192.168.77.1"), ip("192.168.77.20"), &udp);
        const MacAddress mac(0x02, 0x4b, 0, 0, 0, 0x20);
        const QByteArray frame = EthernetFrame({0x02, 0x4b, 0, 0, 0, 1}, mac, &packet).serialize();
        forEachDamage(frame,
                      [&bench](const QByteArray& damaged) { bench.camera.receive(damaged, bench.now); });
        forEachDamage(hex(message), [&bench](const QByteArray& damaged) { bench.tell(damaged); });
        bench.pass(100ms);
    }
    for (quint32 i = 0; i < 20000; ++i) // a flood from everywhere
        bench.tell(
            hex("42010082 0008 0001 00000a00 00000002"),
            {{2, 0, quint8(i >> 16), quint8(i >> 8), quint8(i), 1}, IpAddress(i * 2654435761U), quint16(i)});
    bench.camera.powerOn(bench.now);
    bench.pass(1s);
    bench.heard();
    EXPECT_EQ(bench.ask(hex("42010002 0000 0005"), {}, true).at(0).size(), 256);
}
} // namespace
