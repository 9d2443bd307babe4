#include "gvcp/GVCPAckPacket.h"
#include "gvcp/GVCPActionCommandPacket.h"
#include "gvcp/GVCPCommandPacket.h"
#include "gvcp/GVCPDiscoveryAckPacket.h"
#include "gvcp/GVCPRegisterReadCommandPacket.h"
#include "gvcp/GVCPRegisterWriteCommandPacket.h"
#include "packets/ByteArrayHelpers.h"
#include "tests/packets/TestBytes.h"

#include <QtEndian>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <typeindex>

namespace {
const QByteArray readRegister = hex("42 01 0080 0004 0005 00000938");

TEST(GVCPPacket, codeChoosesTheClass)
{
    const std::map<std::type_index, char> letters{
        {typeid(GVCPCommandPacket), 'c'},       {typeid(GVCPAckPacket), 'a'},
        {typeid(GVCPDiscoveryAckPacket), 'd'},  {typeid(GVCPRegisterReadCommandPacket), 'r'},
        {typeid(GVCPActionCommandPacket), 'x'}, {typeid(GVCPRegisterWriteCommandPacket), 'w'}};
    QByteArray classes(0x10000, '-');
    classes.replace(0x02, 4, "cdca").replace(0x40, 2, "ca").replace(0x80, 8, "rawacaca");
    classes.replace(0xc0, 4, "caca").replace(0x100, 2, "xa");
    QByteArray bytes = hex("43 01 0000 0000 0001"); // a wrong key
    for (int code = 0; code <= 0xffff; ++code) {
        qToBigEndian(quint16(code), bytes.data() + 2);
        const std::unique_ptr<GVCPPacket> packet(GVCPPacket::create(bytes));
        const GVCPPacket* const made = packet.get();
        ASSERT_EQ(made != nullptr ? letters.at(typeid(*made)) : '-', classes[code]) << code;
        EXPECT_TRUE(made == nullptr ||
                    (made->isCommand() == (code % 2 == 0) && made->isValid() != made->isCommand()));
    }
    EXPECT_EQ(GVCPPacket::create(readRegister.left(7)), nullptr);
    // The bytes are gone before the packet is.
    const std::unique_ptr<GVCPPacket> packet(GVCPPacket::create(TightBytes(readRegister).array()));
    EXPECT_EQ(dynamic_cast<GVCPRegisterReadCommandPacket&>(*packet).address(0), 0x938U);
}

struct Vector {
    const char* name;
    const char* bytes;
    bool valid;
    Values fields; // flags or status, code, id
    const char* payload;
};

const Vector commands[] = {
    {"readRegister", "42 01 0080 0004 0005 00000938", true, {1, 0x80, 5}, "00000938"},
    {"unknownCode", "42 01 7ffe 0000 0004", true, {1, 0x7ffe, 4}, ""},
    {"oneByteTooMany", "42 01 0080 0000 0001 00", false, {0, 0, 0}, ""},
    {"oneByteTooFew", "42 01 0080 0004 0001 000000", false, {0, 0, 0}, ""},
    {"wrongKey", "43 01 0080 0000 0001", false, {0, 0, 0}, ""},
    {"idZero", "42 11 0080 0002 0000 abcd", false, {0x11, 0x80, 0}, "abcd"},
    {"nothing", "", false, {0, 0, 0}, ""},
    {"lengthWraps", "42 01 0080 ffff 00", false, {0, 0, 0}, ""},
};
const Vector acks[] = {
    {"errorStatus", "8001 0081 0004 ff19 80000001", true, {0x8001, 0x81, 0xff19}, "80000001"},
    {"commandAsAck", "42 01 0080 0000 0001", true, {0x4201, 0x80, 1}, ""},
    {"ackTooLong", "0000 0081 0000 0001 00", false, {0, 0, 0}, ""},
    {"ackIdZero", "0000 0081 0000 0000", false, {0, 0x81, 0}, ""},
};

void expectHeader(const Vector& each, GVCPPacket& packet, quint16 flagsOrStatus, quint16 code)
{
    SCOPED_TRACE(each.name);
    EXPECT_EQ(packet.isValid(), each.valid);
    EXPECT_EQ((Values{flagsOrStatus, code, packet.requestId()}), each.fields);
    EXPECT_EQ(packet.payload(), hex(each.payload));
    EXPECT_EQ(packet.serialize(), each.valid ? hex(each.bytes) : QByteArray());
    EXPECT_EQ(packet.totalSize(), 8U + packet.payloadLength());
    packet.setRequestId(5);
    EXPECT_TRUE(packet.isValid()) << "whatever it was";
}

TEST(GVCPPacket, takesTheHeaderOnlyWhenLengthAndKeyAgree)
{
    for (const Vector& each : commands) {
        GVCPCommandPacket packet(TightBytes(hex(each.bytes)).array());
        expectHeader(each, packet, packet.flags(), packet.command());
    }
    for (const Vector& each : acks) {
        GVCPAckPacket packet(TightBytes(hex(each.bytes)).array());
        expectHeader(each, packet, packet.status(), packet.acknowledge());
    }
}

TEST(GVCPPacket, setters)
{
    GVCPCommandPacket packet(0x11, 0x0086, 0, "abcdef", HostOrder);
    EXPECT_FALSE(packet.isValid());
    packet.setRequestId(7);
    packet.setRequestId(0);
    EXPECT_EQ(packet.serialize(), QByteArray()) << "valid no more";
    packet.setRequestId(7);
    EXPECT_EQ(packet.serialize(), hex("4211008600040007") + byteArrayToNetworkWords("abcd"));
    packet.setPayload("abcdef", NetworkOrder);
    packet.setCommand(0x40);
    packet.setFlags(0x80);
    EXPECT_EQ(packet.serialize(), hex("4280004000060007") + "abcdef");
    EXPECT_TRUE(packet.hasFlag(0xc0) && !packet.hasFlag(GVCPPacket::AckRequired));
    EXPECT_TRUE(GVCPCommandPacket::isCommandPort(1, 3956) && GVCPAckPacket::isAckPort(3956, 1));
    EXPECT_FALSE(GVCPCommandPacket::isCommandPort(3956, 1) || GVCPAckPacket::isAckPort(1, 3956));

    GVCPAckPacket ack(0x8001, packet, hex("00000001"), NetworkOrder);
    EXPECT_EQ(ack.serialize(), hex("8001 0041 0004 0007 00000001"));
    ack.setStatus(0);
    ack.setAcknowledge(0x0089);
    EXPECT_EQ(ack.header(), hex("0000 0089 0004 0007"));
}

template <typename Packet>
Values sizes(int payloadSize)
{
    const Packet packet(0, 0x86, 1, QByteArray(payloadSize, 'x'), NetworkOrder);
    return {packet.isValid(), packet.payloadSize(), packet.payloadLength(),
            quint64(packet.serialize().size())};
}

TEST(GVCPPacket, holdsOneByteMoreThanItSends)
{
    for (const auto each : {sizes<GVCPCommandPacket>, sizes<GVCPAckPacket>}) {
        EXPECT_EQ(each(65535), (Values{1, 65535, 65535, 65543}));
        EXPECT_EQ(each(65536), (Values{1, 65536, 0, 0}));
        EXPECT_EQ(each(65537), (Values{0, 0, 0, 8}));
    }
}
} // namespace
