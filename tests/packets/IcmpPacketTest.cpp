#include "packets/IcmpPacket.h"
#include "packets/IpAddress.h"
#include "tests/packets/TestBytes.h"

#include <gtest/gtest.h>

namespace {
const IpAddress none;
const QByteArray request = hex("0800339a00010002616263");

TEST(IcmpPacket, parsesAnyBytesAndKeepsTheChecksum)
{
    for (const QByteArray& bytes : {request, hex("0800ffff0001"), hex("0301"), hex("0800ab"), QByteArray()}) {
        const TightBytes tight(bytes);
        const std::unique_ptr<TransportPacket> base(TransportPacket::create(1, tight.array()));
        const IcmpPacket packet(*base);
        const QByteArray whole = bytes.leftJustified(4, '\0');
        EXPECT_EQ(packet.type(), quint8(whole[0]));
        EXPECT_EQ(packet.code(), quint8(whole[1]));
        EXPECT_EQ(packet.checksum(), whole.mid(2, 2).toHex().toUInt(nullptr, 16));
        EXPECT_EQ(packet.payload(), bytes.mid(4));
        EXPECT_EQ(packet.payloadSize(), quint32(whole.size() - 4));
        EXPECT_EQ(packet.totalSize(), quint32(whole.size()));
        EXPECT_EQ(packet.length(), packet.totalSize());
        EXPECT_EQ(packet.serialize(none, none), whole);
        EXPECT_TRUE(packet.isValid());
        EXPECT_EQ(packet.layer(), 4U);
        EXPECT_EQ(packet.headerSize(), 4U);
        EXPECT_EQ(packet.protocolName(), "ICMP");
        EXPECT_EQ(packet.protocol(), IcmpPacket::Protocol);
    }
    EXPECT_EQ(TransportPacket::create(6, request), nullptr);
}

TEST(IcmpPacket, computesTheChecksumOfBuiltMessages)
{
    const IcmpPacket packet(8, 0, request.mid(4));
    const std::unique_ptr<TransportPacket> copy(TransportPacket::copyOf(packet));
    EXPECT_EQ(packet.serialize(none, none), request);
    EXPECT_EQ(packet.checksum(), 0x339a);
    EXPECT_EQ(copy->serialize(none, none), request);
    EXPECT_EQ(IcmpPacket(0, 0, QByteArray()).serialize(none, none), hex("0000ffff"));
}

TEST(IcmpPacket, repliesToEchoRequestsOnly)
{
    const std::unique_ptr<IcmpPacket> reply(IcmpPacket(request).echoReply());
    EXPECT_EQ(reply->serialize(none, none), hex("00003b9a00010002616263"));
    EXPECT_EQ(reply->echoReply(), nullptr);
    EXPECT_EQ(IcmpPacket(8, 1, "x").echoReply(), nullptr);
}
} // namespace
