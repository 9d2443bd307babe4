#include "packets/UdpPacket.h"
#include "gvcp/GVCPAckPacket.h"
#include "packets/DhcpPacket.h"
#include "packets/IPv4Packet.h"
#include "packets/IcmpPacket.h"
#include "packets/IpAddress.h"
#include "tests/packets/TestBytes.h"

#include <gtest/gtest.h>

#include <memory>

namespace {
const IpAddress from(0x0a000001), to(0x0a000002), other(0x0a000003);
const QByteArray abc = hex("04d2 0f74 000b 132d 616263");
// Recorded: a discovery.
const QByteArray discovery = hex("c350 0f74 0010 df45 4211000200000001");

struct Parsed {
    const char* name;
    QByteArray bytes;
    quint32 destinationPort;
    quint32 checksum;
    QByteArray payload;
    bool valid;
};

const Parsed parsed[] = {
    {"whole", hex("0001 0002 000c abcd 01020304"), 2, 0xabcd, hex("01020304"), true},
    {"padded", hex("0001 0002 000a abcd 01020304"), 2, 0xabcd, hex("0102"), true},
    {"allPadding", hex("0001 0002 0008 abcd 01020304"), 2, 0xabcd, {}, true},
    {"cutShort", hex("0001 0002 0014 abcd 01020304"), 2, 0xabcd, hex("01020304"), false},
    {"lengthBelowHeader", hex("0001 0002 0004 abcd 01020304"), 2, 0xabcd, hex("01020304"), false},
    {"lengthZero", hex("0001 0002 0000 abcd"), 2, 0xabcd, {}, false},
    {"halfChecksum", hex("0001 0002 0008 ab"), 2, 0xab00, {}, true},
    {"halfPort", hex("0001 02"), 0x0200, 0, {}, false},
    {"nothing", {}, 0, 0, {}, false},
};

TEST(UdpPacket, parsesWhatTheLengthFieldSays)
{
    for (const Parsed& each : parsed) {
        SCOPED_TRACE(each.name);
        const std::unique_ptr<TransportPacket> base(
            TransportPacket::create(17, TightBytes(each.bytes).array()));
        const UdpPacket packet(*base);
        const auto size = quint32(each.payload.size());
        EXPECT_EQ((Values{packet.sourcePort(), packet.destinationPort(), packet.checksum(from, to)}),
                  (Values{each.bytes.isEmpty() ? 0U : 1U, each.destinationPort, each.checksum}));
        EXPECT_EQ(packet.payload(), each.payload);
        EXPECT_EQ(packet.isValid(), each.valid);
        EXPECT_EQ((Values{packet.payloadSize(), packet.totalSize(), packet.length(), packet.protocol()}),
                  (Values{size, size + 8, size + 8, 17}));
        EXPECT_EQ(packet.serialize(from, to),
                  each.valid ? each.bytes.leftJustified(8, '\0').left(int(size) + 8) : "");
        EXPECT_EQ(packet.protocolName(), "UDP");
    }
    const IcmpPacket icmp(8, 0, "echo");
    EXPECT_EQ(UdpPacket(static_cast<const TransportPacket&>(icmp)).serialize(from, to).left(6),
              hex("000000000008"));
}

TEST(UdpPacket, computesTheChecksum)
{
    const UdpPacket packet(1234, 3956, "abc", true);
    EXPECT_EQ(packet.serialize(from, to), abc);
    EXPECT_EQ(packet.checksum(from, other), 0x132c) << "the payload's sum is kept, not the addresses";
    EXPECT_EQ(UdpPacket(1234, 3956, hex("d791"), true).checksum(from, to), 0xffff) << "never 0";

    const UdpPacket off(1234, 3956, "abc", false);
    EXPECT_EQ(off.serialize(from, to), hex("04d2 0f74 000b 0000 616263"));
    const std::unique_ptr<TransportPacket> copy(TransportPacket::copyOf(off));
    EXPECT_EQ(copy->serialize(from, to), abc) << "a copy has its checksum on";
    EXPECT_EQ(UdpPacket(static_cast<const TransportPacket&>(off)).serialize(from, to), abc);
}

TEST(UdpPacket, keepsReceivedChecksumUntilARealChange)
{
    const QByteArray wrong = hex("04d2 0f74 000b 5555 616263");
    UdpPacket packet(wrong);
    packet.setSourcePort(1234);
    packet.setDestinationPort(3956);
    EXPECT_EQ(packet.serialize(from, other), wrong);
    EXPECT_EQ(UdpPacket(packet).serialize(from, to), wrong);
    UdpPacket same(wrong);
    same.setData(same.payload()); // the same bytes are a change
    EXPECT_EQ(same.serialize(from, to), abc);
    packet.setDestinationPort(3957);
    packet.setDestinationPort(3956); // a change all the same
    packet.setSourcePort(1234);
    for (int time = 0; time < 2; ++time)
        EXPECT_EQ(packet.serialize(from, to), abc);
}

TEST(UdpPacket, countsIn16Bits)
{
    UdpPacket packet(1, 2, QByteArray(65507, 'x'), true);
    EXPECT_EQ(packet.serialize(from, to).size(), 65515);
    packet.setData(QByteArray(65508, 'x'));
    EXPECT_FALSE(packet.isValid());
    packet.setData(QByteArray(65530, 'x'));
    EXPECT_EQ(packet.serialize(from, to), QByteArray());
    // One child, three lengths: in the total size of the IPv4 packet, its header's word, its payload.
    const IPv4Packet outer(from, to, &packet);
    EXPECT_EQ((Values{packet.length(), packet.totalSize(), outer.totalSize()}), (Values{65538, 2, 22}));
    EXPECT_EQ(outer.serialize().left(4), hex("45000016"));
    EXPECT_EQ(outer.serialize().size(), 20);
    packet.setData("abc");
    EXPECT_EQ(packet.serialize(from, to).size(), 11);

    const QByteArray largest = hex("0001 0002 ffff 1234") + QByteArray(65527, 'x');
    EXPECT_EQ(UdpPacket(largest).serialize(from, to), largest) << "more than can be set";
}

TEST(UdpPacket, choosesTheApplicationByPorts)
{
    const QByteArray ack = hex("0000 0081 0000 0001");
    for (const auto& [source, destination, kind] :
         {std::tuple(68, 67, 'D'), std::tuple(67, 68, 'D'), std::tuple(68, 68, '-'), std::tuple(67, 67, '-'),
          std::tuple(67, 69, '-'), std::tuple(3956, 67, 'G'), std::tuple(67, 3956, 'G'),
          std::tuple(3956, 1, 'G'), std::tuple(1, 2, '-')}) {
        UdpPacket packet(quint16(source), quint16(destination), ack, true);
        const std::unique_ptr<ApplicationPacket> next(packet.applicationPacket());
        const bool isDhcp = dynamic_cast<DhcpPacket*>(next.get()) != nullptr;
        const bool isGvcp = dynamic_cast<GVCPAckPacket*>(next.get()) != nullptr;
        EXPECT_EQ(isDhcp ? 'D' : isGvcp ? 'G' : '-', kind) << source << " " << destination;
        packet.setData("short");
        EXPECT_EQ(std::unique_ptr<ApplicationPacket>(packet.applicationPacket()) != nullptr, isDhcp);
    }
}
} // namespace
