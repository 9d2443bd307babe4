#include "packets/ArpPacket.h"
#include "packets/EthernetFrame.h"
#include "packets/IPv4Packet.h"
#include "packets/IcmpPacket.h"
#include "packets/IpAddress.h"
#include "packets/UdpPacket.h"
#include "tests/packets/TestBytes.h"

#include <gtest/gtest.h>

// A frame is written into one array where its layers are of the classes here. The yardstick: each layer
// serialised by itself, and the arrays joined.
namespace {
const IpAddress host(0x0a4d0101), camera(0x0a4d0162);
const MacAddress hostMac(0x02, 0, 0, 0, 0, 0x01), cameraMac(0x02, 0, 0, 0, 0, 0x02);

/// Classes of a caller's, which may serialise in their own way.
class ShoutedUdp : public UdpPacket {
public:
    using UdpPacket::UdpPacket;
    QByteArray serialize(const IpAddress& source, const IpAddress& destination) const override
    {
        return UdpPacket::serialize(source, destination) + "!!!";
    }
};
class TaggedIPv4 : public IPv4Packet {
public:
    using IPv4Packet::IPv4Packet;
    QByteArray serialize() const override { return "tag" + IPv4Packet::serialize(); }
};

QByteArray joined(const char* type, const QByteArray& packet)
{
    return (hex("020000000001 020000000002") + hex(type) + packet).leftJustified(60, '\0');
}

void expectJoined(const char* type, InternetPacket&& packet)
{
    const EthernetFrame frame(cameraMac, hostMac, &packet);
    const QByteArray written = frame.serialize();
    const quint16 length = packet.lengthField();
    EXPECT_EQ(written, joined(type, packet.serialize()));
    EXPECT_EQ(length, packet.lengthField());
    const std::unique_ptr<InternetPacket> beside(frame.internetPacket());
    ASSERT_NE(beside, nullptr);
    EXPECT_NE(beside.get(), &packet);
    EXPECT_EQ(beside->lengthField(), 0) << "the header image was copied";
    EXPECT_EQ(beside->sourceAddress(), packet.sourceAddress());
    const bool tagged = dynamic_cast<const TaggedIPv4*>(&packet) != nullptr; // which a copy is not
    EXPECT_EQ(beside->serialize(), packet.serialize().mid(tagged ? 3 : 0));
}

void expectJoined(TransportPacket&& packet)
{
    const QByteArray alone = packet.serialize(camera, host);
    EXPECT_EQ(IPv4Packet(camera, host, &packet).serialize().mid(20), alone);
    expectJoined("0800", IPv4Packet(camera, host, &packet));
    expectJoined("0800", TaggedIPv4(camera, host, &packet));
}

TEST(FrameBuild, isTheSameAsItsLayersJoined)
{
    for (const int size : {0, 1, 2, 3, 17, 18, 19, 20, 256, 548, 1473, 65507, 65508, 70001}) {
        SCOPED_TRACE(size);
        QByteArray data(size, Qt::Uninitialized);
        for (int i = 0; i < size; ++i)
            data[i] = char(i * 7 + size);
        expectJoined(UdpPacket(3956, 50000, data, true));
        expectJoined(UdpPacket(67, 68, data, false));
        expectJoined(
            UdpPacket(hex("0f74c350 0014 0000") + data)); // right for 12 bytes, else cut short or cut off
        expectJoined(ShoutedUdp(3956, 50000, data, true));
        expectJoined(IcmpPacket(8, 0, data));
        expectJoined("0800", IPv4Packet(camera, host, UdpPacket::Protocol, data));
        expectJoined("0800", IPv4Packet(camera, host, TransportPacket::noProtocol, data));
        expectJoined("0806", ArpPacket(data));
    }
}

TEST(FrameBuild, hasWhatAChildSaysLater)
{
    UdpPacket udp(1, 2, hex("aa"), true);
    IPv4Packet ip(camera, host, &udp);
    const EthernetFrame frame(cameraMac, hostMac, &ip);
    const QByteArray before = frame.serialize();
    udp.setData(QByteArray(65508, 'x'));
    // Of an invalid datagram the header counts the size, wrapped, and there is nothing behind it.
    EXPECT_EQ(frame.serialize(), joined("0800", ip.serialize()));
    EXPECT_EQ(ip.serialize().mid(2, 2), hex("0000"));
    udp.setData(hex("aa"));
    EXPECT_EQ(frame.serialize(), before);
}
} // namespace
