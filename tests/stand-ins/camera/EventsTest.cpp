#include "tests/stand-ins/camera/CameraBench.h"

namespace {
const Client listener{{0x02, 0x4b, 0, 0, 0, 9}, ip("192.168.77.9"), 0x1234};

/// Takes control, and opens the message channel to the listener.
void openChannel(CameraBench& bench, const char* timeoutAndRetries)
{
    bench.takeControl();
    bench.arp("ffffffffffff 024b00000009 0806 0001080006040001 024b00000009c0a84d09 000000000000c0a84d14");
    bench.command("0082 00000b10 c0a84d09 00000b00 00001234 00000944 00000001");
    bench.command(timeoutAndRetries);
    bench.command("0086 0000b000 a1a2a3a4 b1b2b3b4 c1c2c3c4 d1d2d3d4 eeeeeeee");
    bench.pass(1s); // timestamps are 1000000000 from here on, 3b9aca00
    bench.heard();
}

TEST(CameraEvents, bothKindsHaveBothLayouts)
{
    CameraBench bench;
    openChannel(bench, "0082 00000b14 00000000");
    const auto sent = [&bench](const char* command) {
        bench.tell(hex(command));
        return bench.heard();
    };
    const QByteArray done = hex("00000083 0004 0001 00000001");
    EXPECT_THAT(sent("42010082 0008 0001 0000a020 00009001"),
                ElementsAre(hex("420000c0 0010 0001 0000 9001 0000 0001 000000003b9aca00"), done));
    EXPECT_EQ(bench.sent.size(), 0U);
    EXPECT_THAT(
        sent("42000082 0008 0002 0000a020 00019005"),
        ElementsAre(
            hex("420000c2 0020 0002 0000 9005 0000 0002 000000003b9aca00 a1a2a3a4b1b2b3b4c1c2c3c4d1d2d3d4")));
    EXPECT_THAT(sent("42000082 0010 0003 0000a024 00000001 0000a020 0000ffff"),
                ElementsAre(hex("421000c0 0018 0003 0000 ffff 0000 0000 0000000000000003 000000003b9aca00")));
    EXPECT_THAT(sent("42000082 0008 0004 0000a020 00010001"),
                ElementsAre(hex("421000c2 0028 0004 0000 0001 0000 0000 0000000000000004 000000003b9aca00"
                                "a1a2a3a4b1b2b3b4c1c2c3c4d1d2d3d4")));
    bench.command("0082 00000b00 00000000"); // closed
    EXPECT_THAT(sent("42000082 0008 0005 0000a020 00009001"), IsEmpty());
    EXPECT_EQ(bench.camera.counters().events, 4U);
}

TEST(CameraEvents, isRepeatedUntilItIsAcknowledged)
{
    CameraBench bench;
    openChannel(bench, "0082 00000b14 00000064 00000b18 00000002"); // 100 ms, twice more
    const QByteArray first = hex("420100c0 0010 0001 0000 9001 0000 0001 000000003b9aca00");
    const QByteArray second = hex("420100c0 0010 0002 0000 9001 0000 0002 000000003b9aca00");
    bench.tell(hex("42000082 0010 0001 0000a020 00009001 0000a020 00009001"));
    EXPECT_THAT(bench.heard(), ElementsAre(first)); // one at a time
    bench.pass(100ms);
    EXPECT_THAT(bench.heard(), ElementsAre(first));
    for (const char* other : {"000000c1 0000 0002", "000000c3 0000 0001", "000000c1 0001 0001"})
        EXPECT_THAT(bench.ask(hex(other), listener), IsEmpty());
    EXPECT_THAT(bench.ask(hex("000000c1 0000 0001"), {}), IsEmpty()); // of somebody else
    EXPECT_THAT(bench.ask(hex("000000c1 0000 0001"), listener), ElementsAre(second));
    bench.pass(300ms);
    EXPECT_THAT(bench.heard(), ElementsAre(second, second));
    EXPECT_EQ(bench.camera.counters().eventsLost, 1U);
    // What nobody acknowledges doesn't pile up, and goes with the channel.
    bench.tell(hex("42000082 0200 0009") + hex("0000a020 00009001").repeated(64));
    EXPECT_EQ(bench.camera.counters().eventsLost, 33U);
    bench.heard();
    for (const char* const closedAndOpenAgain :
         {"0082 00000b00 00000000 00000b00 00001234", "0082 00000b10 00000000 00000b10 c0a84d09"}) {
        bench.command(closedAndOpenAgain);
        bench.pass(1s);
        EXPECT_THAT(bench.heard(), IsEmpty());
        bench.tell(hex("42000082 0008 000a 0000a020 00009001"));
    }
}

TEST(CameraEvents, comeAtTheirRate)
{
    CameraBench often("events=20");
    openChannel(often, "0082 00000b14 00000000");
    often.pass(1s);
    EXPECT_EQ(often.heard().size(), 20U);
    const auto before = often.camera.counters().events;
    often.camera.expire(often.now += 1h); // nobody looked: not made good
    often.camera.expire(often.now);
    EXPECT_LE(often.camera.counters().events, before + 2);
}

TEST(CameraEvents, actionNeedsTheKeysAndABitOfTheMask)
{
    CameraBench bench;
    openChannel(bench, "0082 00000b14 00000000");
    bench.command("0082 0000090c 11223344 00009810 55667788 00009814 00000006");
    const QByteArray event =
        hex("420000c2 0014 0001 0000 9003 0000 0001 000000003b9aca00 00000001"); // signal 1
    const auto answers = [&bench](const char* message) { return bench.ask(hex(message), {}, true); };
    EXPECT_THAT(answers("42010100 000c 0001 11223344 55667788 00000004"),
                ElementsAre(event, hex("00000101 0000 0001")));
    EXPECT_THAT(answers("42010100 000c 0002 11223344 55667788 00000009"), IsEmpty());
    EXPECT_THAT(answers("42010100 000c 0003 11223344 55667789 00000004"), IsEmpty());
    EXPECT_THAT(answers("42010100 000c 0004 11223345 55667788 00000004"), IsEmpty());
    EXPECT_THAT(answers("42010100 0008 0005 11223344 55667788"), ElementsAre(hex("80020101 0000 0005")));
    EXPECT_THAT(answers("42810100 0014 0006 11223344 55667788 00000004 00000000 00000001"),
                ElementsAre(hex("80130101 0000 0006"))); // at a time: there is no common one
    EXPECT_EQ(bench.command("0080 0000a028 0000090c"), hex("0000 0081 00000001 00000000"));
    // The same bytes later, when a signal listens.
    const QByteArray again = hex("42010100 000c 0007 11223344 55667788 00000008");
    EXPECT_THAT(bench.ask(again, listener, true), IsEmpty());
    bench.command("0082 00009814 00000008");
    bench.pass(2001ms);
    EXPECT_EQ(bench.ask(again, listener, true).size(), 2U);
}
} // namespace
