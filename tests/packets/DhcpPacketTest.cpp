#include "packets/DhcpPacket.h"
#include "packets/IpAddress.h"
#include "packets/MacAddress.h"
#include "packets/UdpPacket.h"
#include "tests/packets/TestBytes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace {
using Owned = std::unique_ptr<DhcpPacket>;

const IpAddress nobody(0), everybody(0xffffffff), server(0x0a4d0162), dnsmasq(0x0a4d0114), client(0x0a4d019c);

// A message as long as its options. Fields from op on, as far as they aren't 0.
QByteArray message(const char* fields, const QByteArray& options)
{
    return hex(fields).leftJustified(236, '\0') + hex("63825363") + options;
}

QByteArray filledUp(const QByteArray& bytes)
{
    return bytes.leftJustified(548, '\0');
}

quint32 xid(const char* digits)
{
    quint32 value = 0;
    std::memcpy(&value, hex(digits).constData(), sizeof(value));
    return value;
}

// Recorded: dnsmasq's offer to a client of 548-byte messages.
const QByteArray offer =
    message("020106002265b1f500000000000000000a4d019c0a4d011400000000024b00000063",
            hex("350102 36040a4d0114 330400000078 3a040000003c 3b0400000069 0104ffffff00 1c040a4d01ff "
                "0f086c61622e74657374 06040a4d0114 03040a4d0114 ff"));

// The client's answers to it, with the head of the UDP datagram.
QByteArray sent(const char* udpHeader, const char* xid, const char* ciaddr, const char* options)
{
    const QByteArray fields =
        QByteArray("01010600") + xid + "00000000" + ciaddr + "000000000000000000000000024b00000063";
    return hex(udpHeader) + filledUp(message(fields.constData(), hex(options)));
}

TEST(DhcpPacket, clientSendsWhatWasRecorded)
{
    const DhcpPacket received(offer);
    const Owned discover(DhcpPacket::discover(MacAddress(2, 0x4b, 0, 0, 0, 0x63), xid("2265b1f5")));
    EXPECT_EQ(UdpPacket(68, 67, *discover).serialize(nobody, everybody),
              sent("00440043022c1ea7", "2265b1f5", "00000000",
                   "350101 010400000000 030400000000 3a0400000000 3b0400000000 ff"));
    const Owned request(received.request(xid("91b7584a")));
    EXPECT_EQ(UdpPacket(68, 67, *request).serialize(nobody, everybody),
              sent("00440043022cc4f9", "91b7584a", "00000000", "350103 32040a4d019c 36040a4d0114 ff"));
    const Owned renew(received.renew(xid("cd613e30")));
    EXPECT_EQ(UdpPacket(68, 67, *renew).serialize(client, dnsmasq),
              sent("00440043022ce577", "cd613e30", "0a4d019c", "350103 32040a4d019c ff"));
    const Owned decline(received.decline(xid("1027c4d1")));
    EXPECT_EQ(UdpPacket(68, 67, *decline).serialize(nobody, everybody),
              sent("00440043022cd902", "1027c4d1", "00000000", "350104 32040a4d019c 36040a4d0114 ff"));
    EXPECT_TRUE(Owned(discover->request(1))->hasOption(54)) << "empty where the offer has none";
}

// Recorded: another server's offer to udhcpc.
TEST(DhcpPacket, serverAnswersWhatWasRecorded)
{
    const QByteArray asked =
        message("0101060078ee6f2e0000000000000000000000000000000000000000024b00000001",
                hex("350101 39020240 37070103060c0f1c2a 3c0c756468637020312e33352e30 3d0701024b00000001 ff"));
    bool broadcast = false;
    DhcpPacket request(asked);
    request.setCiaddr(IpAddress(0x0a4d0107)); // for an acknowledge only
    const Owned offered(request.reply(IpAddress(0x0a4d019f), server, &broadcast, 120));
    EXPECT_EQ(offered->serialize(),
              filledUp(message("0201060078ee6f2e00000000000000000a4d019f0000000000000000024b00000001",
                               hex("350102 330400000078 36040a4d0162 ff"))));
    EXPECT_TRUE(broadcast);
    // The same for a request.
    request.setOption(53, hex("03"));
    request.setFlags(0x8001);
    const Owned acknowledged(request.reply(IpAddress(0x0a4d019f), server, nullptr));
    EXPECT_EQ(acknowledged->serialize(),
              filledUp(message("0201060078ee6f2e000080010a4d01070a4d019f0000000000000000024b00000001",
                               hex("350105 330400000e10 36040a4d0162 ff"))));
    acknowledged->setOption(53, hex("01"));
    EXPECT_EQ(acknowledged->reply(client, server, &broadcast), nullptr) << "a reply";
    for (const char* const type : {"", "08", "0101", "02"}) {
        request.setOption(53, hex(type));
        EXPECT_EQ(request.reply(client, server, &broadcast), nullptr) << type;
    }
    EXPECT_EQ(DhcpPacket(asked.left(236)).reply(client, server, &broadcast), nullptr) << "no cookie";

    DhcpPacket relayed(message("01010600000000000000000000000000000000000000000a000001", hex("350101ff")));
    for (const int flags : {0x7fff, 0x8000}) {
        relayed.setFlags(quint16(flags));
        EXPECT_NE(Owned(relayed.reply(client, server, &broadcast)), nullptr);
        EXPECT_EQ(broadcast, flags == 0x8000);
    }
}

struct Area {
    const char* name;
    QByteArray options;
    QList<quint8> codes;
    quint8 code;
    QByteArray value;
};

const QByteArray nearlyFull = hex("2bff") + QByteArray(255, 'x'); // leaves 51 bytes

const Area areas[] = {
    {"nothing", "", {}, 53, {}},
    {"padInFront", hex("00350101ff"), {}, 53, {}},
    {"padLater", hex("3501010000060101ff"), {6, 53}, 6, hex("01")},
    {"lastOneCounts", hex("350103 350101 ff"), {53}, 53, hex("01")},
    {"behindTheEnd", hex("350101 ff 060101"), {53}, 6, {}},
    {"cutShort", hex("350101 0608 aabb"), {6, 53}, 6, hex("aabb000000000000")},
    {"codeAlone", hex("350101 06"), {6, 53}, 6, {}},
    {"justFits", nearlyFull + hex("0631") + QByteArray(49, 'y'), {6, 43}, 6, QByteArray(49, 'y')},
    {"oneByteTooLong", nearlyFull + hex("0632") + QByteArray(50, 'y'), {43}, 43, QByteArray(255, 'x')},
    {"lastTwoBytes", nearlyFull + hex("062f") + QByteArray(47, 'y') + hex("0700"), {6, 7, 43}, 7, {}},
    {"lastByte", nearlyFull + hex("0630") + QByteArray(48, 'y') + hex("07"), {6, 43}, 7, {}},
};

TEST(DhcpPacket, readsOptions)
{
    for (const Area& each : areas) {
        SCOPED_TRACE(each.name);
        const DhcpPacket packet(TightBytes(message("020106", each.options)).array());
        EXPECT_TRUE(packet.isValid());
        EXPECT_EQ(packet.optionCodes(), each.codes);
        EXPECT_EQ(packet.option(each.code), each.value);
        EXPECT_EQ(packet.hasOption(each.code), each.codes.contains(each.code));
    }
}

TEST(DhcpPacket, writesMessageTypeFirstAndLeavesTheRest)
{
    const QByteArray left = "left behind the end";
    const DhcpPacket received(filledUp(offer).replace(529, 19, left));
    const DhcpPacket copy(static_cast<const ApplicationPacket&>(received));
    const QByteArray sorted = hex("350102 0104ffffff00 03040a4d0114 06040a4d0114 0f086c61622e74657374 "
                                  "1c040a4d01ff 330400000078 36040a4d0114 3a040000003c 3b0400000069 ff");
    for (const DhcpPacket* const packet : {&received, &copy, &received}) // twice the same
        EXPECT_EQ(packet->serialize(), filledUp(offer.left(240) + sorted).replace(529, 19, left));

    DhcpPacket built;
    EXPECT_EQ(built.serialize(), QByteArray());
    built.setRequest(true);
    for (const int code : {60, 53, 7})
        built.setOption(quint8(code), "");
    const QByteArray view = built.serialize();
    EXPECT_EQ(view.mid(240, 5), hex("35073cff00")) << "an empty value is its code alone";
    const DhcpPacket same(built);
    built.setXid(xid("01020304"));
    EXPECT_EQ(view.left(8), hex("0101060001020304")) << "a view, and no swap";
    EXPECT_EQ(same.serialize().left(8), hex("0101060000000000"));
}

TEST(DhcpPacket, leavesOutWholeOptionsThatDoNotFit)
{
    DhcpPacket packet;
    packet.setRequest(false);
    EXPECT_TRUE(packet.setOption(43, QByteArray(255, 'x')));
    EXPECT_FALSE(packet.setOption(43, QByteArray(256, 'y')));
    packet.setOption(53, "m");                 // 3 + 257, 48 are left
    packet.setOption(60, QByteArray(46, 'a')); // with the end code one too many
    packet.setOption(61, QByteArray(45, 'b')); // fits to the last byte
    packet.setOption(62, "");
    EXPECT_EQ(packet.serialize().mid(240),
              hex("3501") + "m" + nearlyFull + hex("3d2d") + QByteArray(45, 'b') + hex("ff"));
}

TEST(DhcpPacket, readsAndWritesFields)
{
    DhcpPacket packet;
    const QByteArray view = packet.chaddr();
    packet.setChaddr("0123456789abcdef, and more");
    EXPECT_EQ(view, "0123456789abcdef");
    packet.setChaddr("01");
    EXPECT_EQ(view, QByteArray("01").leftJustified(16, '\0'));
    packet.setYiaddr(client);
    packet.setCiaddr(server);
    packet.setFlags(0x1234);
    packet.setRequest(true);
    EXPECT_EQ(packet.serialize().left(20), hex("01010600 00000000 0000 1234 0a4d0162 0a4d019c"));
    EXPECT_EQ(packet.totalSize(), 548U);
    for (const int at : {0, 1, 2, 236, 239})
        EXPECT_FALSE(DhcpPacket(QByteArray(offer).replace(at, 1, "\3")).isValid()) << at;
}
} // namespace
