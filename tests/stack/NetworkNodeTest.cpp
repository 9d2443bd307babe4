#include "packets/ByteArrayHelpers.h"
#include "packets/IPv4Packet.h"
#include "tests/packets/TestBytes.h"
#include "tests/stack/TestWire.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::SizeIs;

static_assert(after(never, 1s) == never && after(never - 1s, 2s) == never && after(never - 2s, 2s) == never);

namespace {
class Node : public testing::Test {
protected:
    /// Counts the answers to what a callback gets.
    NetworkNode::Resolved into(std::vector<std::optional<MacAddress>>& answers)
    {
        return [&answers](const std::optional<MacAddress>& mac, TimePoint) { answers.push_back(mac); };
    }
    void collect(NetworkNode& node, quint16 port)
    {
        node.bind(port, [this](const Datagram& each, TimePoint) { received.push_back(each.data); });
    }
    TestWire wire;
    std::vector<QByteArray> received;
    const MacAddress maker = macOf(0x62);
};
} // namespace

TEST_F(Node, answersPingAndArpingAsARecordedResponderDid)
{
    TestNode node(wire, maker, net(98));
    std::size_t at = 0;
    for (const QByteArray& frame : captured("arp_icmp")) {
        if (readMacAddress(frame, 6) != maker) {
            node.receive(frame, wire.now);
            continue;
        }
        ASSERT_GT(wire.sent.size(), at);
        const QByteArray& answer = wire.sent[at++];
        // An echo has another identification, time to live and checksum, an odd one a byte more behind it.
        const int same = readField<quint16>(frame, 12) == 0x0806 ? frame.size() : 18;
        EXPECT_EQ(answer.left(same), frame.left(same));
        EXPECT_EQ(answer.mid(26).left(frame.size() - 26), frame.mid(26));
    }
    EXPECT_EQ(at, 15U);
    EXPECT_THAT(wire.sent, SizeIs(at));
}

TEST_F(Node, resolvesOnceAndKeepsTheLatestDatagramsUntilThen)
{
    TestNode a(wire, macOf(1), net(1)), b(wire, macOf(2), net(2));
    collect(b, 7);
    int lost = 0;
    wire.loses = [&](const QByteArray&) { return ++lost == 1; }; // the first request for b
    for (char i = 0; i < 10; ++i)
        EXPECT_TRUE(a.sendUdp(ip(2), 7, 8, QByteArray(2 * i + 1, i), wire.now));
    EXPECT_THAT(wire.sent, SizeIs(1));
    a.setAddress({ip(1), 16}); // still the same address
    wire.run(1s);
    ASSERT_THAT(received, SizeIs(NetworkNode::waitingPerNeighbourMax));
    a.setAddress(net(1));
    EXPECT_EQ(received.front(), QByteArray(5, 2));
    EXPECT_EQ(received.back(), QByteArray(19, 9));
    EXPECT_EQ(a.counters().datagramsUndelivered, 2U);

    wire.sent.clear();
    wire.run(58s);
    a.sendUdp(ip(2), 7, 8, QByteArray(1472, 'x'), wire.now); // b knows a and the other way round
    EXPECT_FALSE(a.sendUdp(ip(2), 7, 8, QByteArray(1473, 'x'), wire.now));
    wire.run(2s);
    EXPECT_THAT(wire.sent, ElementsAre(SizeIs(1514)));
    a.sendUdp(ip(2), 7, 8, "old", wire.now);
    wire.run(0s);
    EXPECT_THAT(wire.sent, SizeIs(4)) << "too old: request, reply, datagram";
    a.sendUdp(ip(255), 7, 8, "to all", wire.now);
    wire.run(0s);
    EXPECT_EQ(received.back(), "to all");

    std::vector<std::optional<MacAddress>> answers;
    wire.sent.clear();
    a.resolve(ip(9), into(answers), wire.now);
    a.resolve(ip(2), into(answers), wire.now);
    wire.run(10s);
    EXPECT_THAT(answers, ElementsAre(macOf(2), std::nullopt));
    EXPECT_THAT(wire.sent, SizeIs(3));

    // Nothing goes out with an address that was left, and nothing to one node without an address.
    a.sendUdp(ip(8), 7, 8, "waits", wire.now);
    TestNode c(wire, macOf(8));
    a.setAddress(net(3));
    EXPECT_EQ(a.nextDeadline(), never);
    a.sendUdp(ip(8), 7, 8, "waits beside another question", wire.now);
    a.resolve(ip(8), into(answers), wire.now);
    a.setAddress(net(4));
    c.setAddress(net(8));
    received.clear();
    collect(c, 7);
    wire.run(1s);
    a.resolve(ip(9), into(answers), wire.now);
    a.setAddress({});
    wire.sent.clear();
    EXPECT_FALSE(a.sendUdp(ip(8), 7, 8, "from nobody", wire.now) || a.sendEcho(ip(8), 1, 1, {}, wire.now));
    a.resolve(ip(7), into(answers), wire.now);
    EXPECT_TRUE(a.sendUdp(IpAddress::broadcast(), 7, 8, "to all", wire.now));
    wire.run(3s);
    EXPECT_THAT(received, ElementsAre("to all", "to all")); // b and c
    EXPECT_THAT(wire.sent, SizeIs(1));
    EXPECT_THAT(answers, ElementsAre(macOf(2), std::nullopt, macOf(8), std::nullopt, std::nullopt));
}

TEST_F(Node, learnsFromWhoAsksForItAndUpdatesWhatItKnows)
{
    const std::vector<QByteArray> frames = captured("arp_icmp");
    TestNode node(wire, maker, net(98));
    const auto knows = [&] {
        const std::size_t before = wire.sent.size();
        node.sendUdp(ip(1), 7, 8, "x", wire.now);
        return wire.sent.size() == before + 1 && readMacAddress(wire.sent.back(), 0) == macOf(1);
    };
    node.receive(frames[33], wire.now); // gratuitous request and reply of 10.77.1.1
    node.receive(frames[34], wire.now);
    node.receive(frames[35], wire.now); // 10.77.1.1 asks for somebody else
    EXPECT_FALSE(knows());
    wire.run(4s);                       // nobody answers
    node.receive(frames[25], wire.now); // asks for us
    EXPECT_TRUE(knows());
    wire.run(50s);
    node.receive(frames[34], wire.now);
    wire.run(50s);
    EXPECT_TRUE(knows());
}

TEST_F(Node, defendsItsAddressAndFindsOutWhoUsesAnother)
{
    const std::vector<QByteArray> frames = captured("arp_icmp");
    TestNode a(wire, macOf(5), net(1)), b(wire, macOf(6)), c(wire, macOf(7));
    std::vector<MacAddress> conflicts;
    int undefended = 0;
    a.onConflict([&](const MacAddress& who, bool isDefended, TimePoint) {
        conflicts.push_back(who);
        undefended += isDefended ? 0 : 1;
    });
    for (const int frame : {33, 34, 27}) // 10.77.1.1 announced, answered and asked from, not always to a
        a.receive(QByteArray(frames[std::size_t(frame)]).replace(0, 6, QByteArray(6, '\xff')), wire.now);
    EXPECT_THAT(conflicts, ElementsAre(macOf(1), macOf(1), macOf(1)));
    EXPECT_EQ(undefended, 2);
    EXPECT_THAT(wire.sent, SizeIs(1));
    wire.run(10s);
    a.receive(frames[34], wire.now);
    a.setAddress(net(3)); // the wait is of one address
    a.setAddress(net(1));
    a.receive(frames[34], wire.now);
    EXPECT_THAT(wire.sent, ElementsAre(wire.sent[0], wire.sent[0], wire.sent[0]));
    EXPECT_EQ(wire.sent[0].left(42).toHex(), "ffffffffffff024b00000005080600010800060400" // RFC 5227, 1.1
                                             "01024b000000050a4d0101"
                                             "0000000000000a4d0101");

    std::vector<std::optional<MacAddress>> users, rivals, none;
    b.probe(ip(1), 3, 100ms, into(users), wire.now);
    b.probe(ip(3), 3, 100ms, into(rivals), wire.now);
    c.probe(ip(3), 3, 100ms, into(rivals), wire.now);
    b.probe(ip(4), 3, 100ms, into(none), wire.now);
    b.probe(ip(4), 1, 100ms, into(none), wire.now, &c);
    b.cancelProbes(&c); // the other one goes on
    wire.run(299ms);
    EXPECT_THAT(users, ElementsAre(macOf(5)));
    EXPECT_THAT(rivals, testing::UnorderedElementsAre(macOf(6), macOf(7)));
    EXPECT_THAT(none, SizeIs(0));
    wire.run(1ms);
    EXPECT_THAT(none, ElementsAre(std::nullopt));
    EXPECT_THAT(conflicts, SizeIs(5)) << "a probe is none";

    TestNode d(wire, macOf(8), {IpAddress(0xa9fe0108U), 16}), e(wire, macOf(9), {IpAddress(0xa9fe0109U), 16});
    d.resolve(e.address().address, into(users), wire.now);
    wire.run(0s);
    EXPECT_EQ(readMacAddress(wire.sent.back(), 6), e.mac());
    EXPECT_TRUE(readMacAddress(wire.sent.back(), 0).isBroadcast()) << "RFC 3927, 2.5";
}

TEST_F(Node, echoesEverySizeThatFitsAFrameButNoBroadcast)
{
    TestNode a(wire, macOf(1), net(1)), b(wire, macOf(2), net(2));
    std::vector<NetworkNode::EchoReply> replies;
    a.onEchoReply([&](const NetworkNode::EchoReply& each, TimePoint) { replies.push_back(each); });
    for (const int size : {0, 1, 2, 17, 18, 19, 999, 1471, 1472, 1473}) {
        const QByteArray data = QByteArray(size, 'd').replace(0, 2, "\x12\x34").left(size);
        EXPECT_EQ(a.sendEcho(ip(2), 0x1234, quint16(size), data, wire.now), size <= 1472);
        wire.run(0s);
        EXPECT_TRUE(replies.back().data == data || size == 1473);
        EXPECT_TRUE(replies.back().sequence == size || size == 1473);
    }
    a.sendEcho(ip(255), 1, 1, {}, wire.now);
    wire.run(0s);
    EXPECT_THAT(replies, SizeIs(9));
    EXPECT_EQ(replies[0].id, 0x1234);
    EXPECT_EQ(replies[0].sender, ip(2));
}

namespace {
using Counter = quint64 NetworkNode::Counters::*;
struct Change {
    const char* name;
    int at;
    const char* bytes;
    Counter counter; // null: taken all the same
};
using C = NetworkNode::Counters;
const Change changes[] = {{"nothing", 0, "", nullptr},
                          {"to all", 0, "ffffffffffff", &C::toOtherAddress},
                          {"to another station", 0, "024b00000063", &C::toOtherMac},
                          {"from itself", 6, "024b00000062", &C::fromSelf},
                          {"from a group", 6, "034b00000001", &C::impossibleSender},
                          {"tagged", 12, "810000640800", &C::tagged},
                          {"of another type", 12, "88b5", &C::unknownType},
                          {"version 6", 14, "65", &C::malformed},
                          {"header too short", 14, "44", &C::malformed},
                          {"longer than it is", 16, "05dc", &C::malformed},
                          {"no length", 16, "0000", &C::malformed},
                          {"first fragment", 20, "2000", &C::fragments},
                          {"last fragment", 20, "0001", &C::fragments},
                          {"may be fragmented", 20, "0000", nullptr},
                          {"wrong header checksum", 24, "5555", nullptr},
                          {"unknown protocol", 23, "06", &C::unusedMessage},
                          {"from a group's address", 26, "e0000001", &C::impossibleSender},
                          {"from loopback", 26, "7f000001", &C::impossibleSender},
                          {"from the own address", 26, "0a4d0162", &C::impossibleSender},
                          {"from the net", 26, "0a4d0100", &C::impossibleSender},
                          {"from all of the net", 26, "0a4d01ff", &C::impossibleSender},
                          {"to another address", 30, "0a4d0163", &C::toOtherAddress},
                          {"to the net", 30, "0a4d01ff", nullptr},
                          {"to another net", 30, "0a4d02ff", &C::toOtherAddress},
                          {"to a closed port", 36, "0001", &C::unboundPort},
                          {"wrong datagram length", 38, "00ff", &C::malformed},
                          {"partial checksum", 40, "1234", nullptr}};
} // namespace

TEST_F(Node, takesWhatIsMeantForItAndCountsTheRest)
{
    const QByteArray good = captured("udp").at(3);
    for (const Change& change : changes) {
        SCOPED_TRACE(change.name);
        TestNode node(wire, maker, net(98));
        received.clear();
        collect(node, readField<quint16>(good, 36));
        const QByteArray bytes = hex(change.bytes);
        node.receive(QByteArray(good).replace(change.at, bytes.size(), bytes), wire.now);
        EXPECT_THAT(received, SizeIs(change.counter == nullptr ? 1 : 0));
        EXPECT_TRUE(change.counter == nullptr || node.counters().*change.counter == 1);
        // Without an address: datagrams to the own MAC address.
        node.setAddress({});
        node.receive(QByteArray(good).replace(30, 4, "\x01\x02\x03\x04"), wire.now);
        EXPECT_THAT(received, SizeIs(change.counter == nullptr ? 2 : 1));
    }
    EXPECT_THAT(wire.sent, SizeIs(0));
}

TEST_F(Node, staysBoundedUnderAFlood)
{
    TestNode node(wire, maker, net(98));
    std::vector<std::optional<MacAddress>> answers;
    QByteArray request = captured("arp_icmp")[1];
    for (quint32 i = 0; i < 3000; ++i) {
        qToBigEndian(0x0a000000U + i, request.data() + 28);
        node.receive(request, wire.now);
        node.sendUdp(IpAddress(0x0b000000U + i), 7, 8, "x",
                     wire.now + Duration(i)); // asked for, never answered
    }
    EXPECT_THAT(wire.sent, SizeIs(6000));
    const auto known = [&](quint32 i) {
        answers.clear();
        node.resolve(IpAddress(0x0a000000U + i), into(answers), wire.now);
        return answers.size() == 1 && answers[0].has_value();
    };
    EXPECT_TRUE(known(2999));
    EXPECT_TRUE(known(3000 - NetworkNode::neighboursMax));
    EXPECT_FALSE(known(3000 - NetworkNode::neighboursMax - 1));
    wire.run(3s + 3us);
    EXPECT_EQ(node.nextDeadline(), never);
    EXPECT_EQ(node.counters().datagramsUndelivered, 3000U);
    EXPECT_THAT(wire.sent, SizeIs(6000 + 1 + 64 * 2));
}
