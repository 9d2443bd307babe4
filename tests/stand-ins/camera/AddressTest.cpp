#include "tests/stand-ins/camera/CameraBench.h"

#include "stack/DhcpServer.h"

#include <set>

namespace {
using mesk::stack::NetworkNode;

/// The ARP messages among the frames: without their first 6 bytes, which are always the same.
std::vector<QByteArray> arpMessages(std::vector<QByteArray>& sent)
{
    std::vector<QByteArray> messages;
    for (const QByteArray& frame : sent)
        if (frame.mid(12, 2) == hex("0806"))
            messages.push_back(frame.mid(20, 22));
    sent.clear();
    return messages;
}

// RFC 5227: an ARP request without a sender address, and one in which both addresses are the own one.
const QByteArray probe = hex("0001 024b00000020 00000000 000000000000 c0a84d14");
const QByteArray announcement = hex("0001 024b00000020 c0a84d14 000000000000 c0a84d14");
const char* const answerOfAnOwner =
    "ffffffffffff 024b00000001 0806 0001080006040002 024b00000001c0a84d14 024b00000020c0a84d14";

TEST(CameraAddress, persistentOneIsProbedAndAnnounced)
{
    CameraBench bench({}, false);
    bench.pass(250ms);
    EXPECT_THAT(arpMessages(bench.sent), ElementsAre(probe, probe, probe));
    EXPECT_FALSE(bench.camera.address().isThere());
    bench.tell(hex("42010002 0000 0005"), {}, true); // answered all the same, from nowhere to all
    EXPECT_EQ(bench.sent.at(0).left(6) + bench.sent.at(0).mid(26, 8), hex("ffffffffffff 00000000 ffffffff"));
    bench.pass(3s);
    EXPECT_THAT(arpMessages(bench.sent), ElementsAre(announcement, announcement));
    EXPECT_STREQ(bench.camera.addressMethod(), "persistent");
    // Resolution and echo.
    bench.arp("ffffffffffff 024b00000001 0806 0001080006040001 024b00000001c0a84d01 000000000000c0a84d14");
    EXPECT_THAT(arpMessages(bench.sent),
                ElementsAre(hex("0002 024b00000020 c0a84d14 024b00000001 c0a84d01")));
    bench.arp("024b00000020 024b00000001 0800 4500001e0001000040010000c0a84d01c0a84d14 0800f7ff000000000102");
    EXPECT_EQ(bench.sent.at(0).mid(34, 2), hex("0000"));
}

TEST(CameraAddress, oneInUseIsLeftForTheNextChoice)
{
    CameraBench bench({}, false);
    bench.arp(answerOfAnOwner); // while it probes
    bench.pass(1s);
    EXPECT_STREQ(bench.camera.addressMethod(), "link-local");
    EXPECT_EQ(bench.camera.address().address.toUInt32() >> 16, 0xa9feU);
    CameraBench again({}, false);
    again.arp(answerOfAnOwner);
    again.pass(1s);
    EXPECT_EQ(again.camera.address().address, bench.camera.address().address); // pseudo-random

    CameraBench later("events=20,pending=500");
    later.takeControl();
    later.arp("ffffffffffff 024b00000001 0806 0001080006040001 024b00000001c0a84d01 000000000000c0a84d14");
    later.command("0082 00000954 00000001 00000b10 c0a84d01 00000b00 00001388");
    later.arp(answerOfAnOwner); // defended once
    later.pass(9s);
    EXPECT_STREQ(later.camera.addressMethod(), "persistent");
    later.command("0080 0000a000");
    later.arp(answerOfAnOwner);
    later.sent.clear();
    later.pass(1s); // neither events nor answers from another address
    EXPECT_THAT(later.heard(), IsEmpty());
    EXPECT_FALSE(later.camera.controller());
    EXPECT_STREQ(later.camera.addressMethod(), "link-local");
    EXPECT_EQ(later.camera.counters().conflicts, 2U);

    // Whoever claims every address gets ten tries a minute, not a loop.
    CameraBench besieged("link-local", false);
    std::set<QByteArray> probed;
    for (int i = 0; i < 300; ++i) {
        besieged.pass(100ms);
        for (const QByteArray& each : arpMessages(besieged.sent)) {
            probed.insert(each.mid(18));
            const QByteArray claim = hex("024b00000020 024b00000001 0806 0001080006040002 024b00000001") +
                                     each.mid(18) + hex("024b00000020") + each.mid(18);
            besieged.arp(claim.toHex().constData());
        }
    }
    EXPECT_EQ(probed.size(), 10U);
    besieged.pass(61s);
    EXPECT_STREQ(besieged.camera.addressMethod(), "link-local");
}

int discovers(CameraBench& bench)
{
    const std::vector<QByteArray> messages = bench.heard();
    return int(std::count_if(messages.begin(), messages.end(),
                             [](const QByteArray& each) { return each.contains(hex("350101")); }));
}

TEST(CameraAddress, comesFromAServerWhileThereIsOne)
{
    CameraBench bench("dhcp", false);
    NetworkNode node({0x02, 0x4b, 0, 0, 0, 1},
                     [&bench](const QByteArray& frame) { bench.camera.receive(frame, bench.now); });
    node.setAddress({ip("10.0.0.1"), 8});
    const mesk::stack::DhcpServer server(node, {ip("10.0.0.7"), ip("10.0.0.9")}, 600s, {});
    const auto talk = [&](int tenths) {
        for (int i = 0; i < tenths; ++i) {
            for (const QByteArray& frame : std::exchange(bench.sent, {}))
                node.receive(frame, bench.now);
            bench.pass(100ms);
        }
    };
    bench.camera.powerOn(bench.now);
    talk(20);
    EXPECT_STREQ(bench.camera.addressMethod(), "dhcp");
    EXPECT_EQ(bench.camera.address().address, ip("10.0.0.7"));
    EXPECT_EQ(bench.command("0080 00000014 00000024 00000034", {Client().mac, ip("10.0.0.1"), 9}),
              hex("0000 0081 00000006 0a000007 ff000000"));
    talk(9000); // renewed
    EXPECT_STREQ(bench.camera.addressMethod(), "dhcp");
    for (int i = 0; i < 2; ++i)
        bench.arp(
            "ffffffffffff 024b00000009 0806 0001080006040002 024b000000090a000007 0000000000000a000007");
    EXPECT_STREQ(bench.camera.addressMethod(), "none");
    talk(150);
    EXPECT_EQ(bench.camera.address().address, ip("10.0.0.8"));
    EXPECT_EQ(bench.camera.counters().conflicts, 2U);
    bench.heard();
    bench.pass(1h); // the server is gone
    EXPECT_STREQ(bench.camera.addressMethod(), "link-local");
    EXPECT_EQ(discovers(bench), 3);
    bench.pass(1h); // and not asked for again
    EXPECT_THAT(bench.sent, IsEmpty());

    CameraBench alone("dhcp", false);
    alone.pass(20s);
    EXPECT_STREQ(alone.camera.addressMethod(), "link-local");
    EXPECT_EQ(discovers(alone), 3);
}

TEST(CameraAddress, isForcedByTheMacAddress)
{
    // As recorded, from somebody in another net.
    const QByteArray force = hex("42010004 0038 2274 0000024b00000062 000000000000000000000000 0a4d0162"
                                 "000000000000000000000000 ffffff00 000000000000000000000000 0a4d0101");
    const Client client{{0x02, 0x4b, 0, 0, 0, 1}, ip("10.77.1.1"), 50000};
    CameraBench other;
    EXPECT_THAT(other.ask(force, client, true), IsEmpty());
    other.pass(1s);
    EXPECT_EQ(other.camera.address().address, ip("192.168.77.20"));

    CameraBench bench("mac=02:4b:00:00:00:62");
    EXPECT_THAT(bench.ask(force, client, true), IsEmpty()); // probed first
    bench.pass(500ms);
    EXPECT_THAT(bench.heard(), ElementsAre(hex("00000005 0000 2274")));
    EXPECT_STREQ(bench.camera.addressMethod(), "forced");
    EXPECT_EQ(bench.camera.address().address, ip("10.77.1.98"));
    QByteArray restart = force;
    restart.replace(28, 4, QByteArray(4, '\0'));
    EXPECT_THAT(bench.ask(restart, client, true), ElementsAre(hex("00000005 0000 2274")));
    bench.pass(1s);
    EXPECT_STREQ(bench.camera.addressMethod(), "persistent");
    // In use, and then no address of one node.
    bench.heard();
    bench.pass(5s);
    bench.tell(force, client, true);
    bench.arp("024b00000062 024b00000001 0806 0001080006040002 024b000000010a4d0162 024b000000620a4d0162");
    bench.pass(1s);
    EXPECT_THAT(bench.heard(), ElementsAre(hex("8fff0005 0000 2274")));
    EXPECT_EQ(bench.camera.address().address, ip("192.168.77.20"));
    restart.replace(28, 4, hex("e0000001"));
    EXPECT_THAT(bench.ask(restart, client, true), ElementsAre(hex("80020005 0000 2274")));
    bench.pass(3s);
    // One at a time, and not while the own address goes.
    QByteArray second = force;
    second.replace(6, 2, hex("2275"));
    bench.tell(force, client, true);
    EXPECT_THAT(bench.ask(second, client, true), ElementsAre(hex("80070005 0000 2275")));
    bench.tell(QByteArray(second).replace(6, 2, hex("2276")), client, true);
    EXPECT_THAT(bench.ask(force, client, true), IsEmpty()) << "again, still probed";
    for (int i = 0; i < 2; ++i)
        bench.arp(answerOfAnOwner);
    EXPECT_THAT(bench.heard(), ElementsAre(hex("8fff0005 0000 2274")));
    bench.pass(3s);
    EXPECT_STREQ(bench.camera.addressMethod(), "link-local");
    // Control is of one address, and has to be taken anew at the next one.
    const QByteArray control = hex("42010082 0008 0001 00000a00 00000002");
    bench.tell(control);
    EXPECT_THAT(bench.ask(force, client, true), ElementsAre(hex("80060005 0000 2274")));
    const QByteArray left =
        byteArrayFromUInt32(qToBigEndian(bench.camera.address().address.toUInt32())).toHex();
    const QByteArray claim =
        "ffffffffffff024b0000000108060001080006040002024b00000001" + left + "024b00000062" + left;
    for (int i = 0; i < 2; ++i)
        bench.arp(claim.constData());
    bench.pass(1s);
    EXPECT_NE(byteArrayFromUInt32(qToBigEndian(bench.camera.address().address.toUInt32())).toHex(), left);
    bench.tell(control);
    EXPECT_THAT(bench.ask(second, client, true), ElementsAre(hex("80060005 0000 2275")));

    // A device that is still about to get its address: in use, as above.
    CameraBench early("mac=02:4b:00:00:00:62", false);
    EXPECT_THAT(early.ask(hex("42010100 0008 0001 00000001 00000001"), client, true), IsEmpty())
        << "an action";
    early.tell(force, client, true);
    early.arp("024b00000062 024b00000001 0806 0001080006040002 024b000000010a4d0162 024b000000620a4d0162");
    early.pass(1s);
    EXPECT_STREQ(early.camera.addressMethod(), "persistent");
}
} // namespace
