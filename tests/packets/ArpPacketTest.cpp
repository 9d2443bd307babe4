#include "packets/ArpPacket.h"
#include "packets/IPv4Packet.h"
#include "packets/IpAddress.h"
#include "packets/MacAddress.h"
#include "tests/packets/TestBytes.h"

#include <gtest/gtest.h>

namespace {
using ArpPointer = std::unique_ptr<ArpPacket>;

const IpAddress ip(0xc0a80001), otherIp(0xc0a80002);
const MacAddress mac(0, 0x11, 0x22, 0x33, 0x44, 0x55), otherMac(2, 0x4b, 0, 0, 0, 0x20);
// Recorded reply.
const QByteArray reply = hex("0001080006040002 024b00000062 0a4d0162 024b00000001 0a4d0101");

void expectInvalid(const QByteArray& bytes)
{
    const ArpPacket packet(TightBytes(bytes).array());
    EXPECT_EQ(packet.operation(), 0);
    EXPECT_EQ(packet.sourceAddress(), IpAddress());
    EXPECT_EQ(packet.destinationAddress(), IpAddress());
    EXPECT_EQ(packet.senderMacAddress(), MacAddress());
    EXPECT_EQ(packet.targetMacAddress(), MacAddress());
    EXPECT_EQ(packet.serialize(), bytes.left(28).leftJustified(28, '\0'));
    EXPECT_EQ(packet.reply(ip, mac), nullptr);
}

TEST(ArpPacket, parsesMessageAndIgnoresWhatIsBehindIt)
{
    for (const QByteArray& bytes : {reply, reply + QByteArray(18, '\0'), reply + "FCS."}) {
        const std::unique_ptr<InternetPacket> base(InternetPacket::create(0x0806, TightBytes(bytes).array()));
        const ArpPacket packet(*base);
        EXPECT_EQ(packet.etherType(), 0x0806);
        EXPECT_EQ(packet.operation(), 2);
        EXPECT_EQ(packet.sourceAddress(), IpAddress(0x0a4d0162));
        EXPECT_EQ(packet.destinationAddress(), IpAddress(0x0a4d0101));
        EXPECT_EQ(packet.senderMacAddress(), MacAddress(2, 0x4b, 0, 0, 0, 0x62));
        EXPECT_EQ(packet.targetMacAddress(), MacAddress(2, 0x4b, 0, 0, 0, 1));
        EXPECT_EQ(packet.headerSize(), 8U);
        EXPECT_EQ(packet.payloadSize(), 0U);
        EXPECT_EQ(packet.totalSize(), 28U);
        EXPECT_EQ(packet.protocol(), 0);
        EXPECT_EQ(packet.payload(), QByteArray());
        EXPECT_EQ(packet.serialize(), reply);
        EXPECT_NE(packet.serialize().constData(), base->serialize().constData()) << "view of another's image";
        EXPECT_EQ(packet.serialize().constData(), packet.serialize().constData()) << "no view";
        EXPECT_EQ(packet.reply(ip, mac), nullptr);
    }
}

TEST(ArpPacket, otherFlavoursAndShortMessagesAreNotValid)
{
    for (int length = 0; length < reply.size(); ++length)
        expectInvalid(reply.left(length));
    const struct {
        int at;
        char value;
    } faults[] = {{0, 1}, {1, 6}, {2, 6}, {3, 1}, {4, 8}, {5, 16}, {6, 1}, {7, 0}, {7, 3}};
    for (const auto& fault : faults) {
        SCOPED_TRACE(fault.at);
        QByteArray bytes = reply;
        bytes[fault.at] = fault.value;
        expectInvalid(bytes);
    }
    EXPECT_EQ(ArpPacket(hex("0001080008040001") + reply.mid(8)).totalSize(), 32U);
    EXPECT_EQ(ArpPacket(hex("00010800ffff")).totalSize(), 8U + 2 * 510);
    EXPECT_EQ(ArpPacket(IPv4Packet(reply)).serialize(), ArpPacket().serialize()) << "copy of another class";
}

TEST(ArpPacket, buildsRequestProbeAnnouncementAndReply)
{
    const ArpPointer request(ArpPacket::request(ip, mac, otherIp)), probe(ArpPacket::probe(otherIp, mac)),
        announcement(ArpPacket::announcement(ip, mac)), answer(request->reply(otherIp, otherMac));
    const QByteArray ask = hex("0001080006040001 001122334455");
    EXPECT_EQ(request->serialize(), ask + hex("c0a80001 000000000000 c0a80002"));
    EXPECT_EQ(probe->serialize(), ask + hex("00000000 000000000000 c0a80002"));
    EXPECT_EQ(announcement->serialize(), ask + hex("c0a80001 000000000000 c0a80001"));
    EXPECT_EQ(answer->serialize(), hex("0001080006040002 024b00000020 c0a80002 001122334455 c0a80001"));
    EXPECT_EQ(answer->sourceAddress(), otherIp);
    EXPECT_EQ(answer->destinationAddress(), ip);
    EXPECT_EQ(answer->targetMacAddress(), mac);
    EXPECT_EQ(answer->operation(), 2);
}
} // namespace
