#include "gvcp/GVCPActionCommandPacket.h"
#include "gvcp/GVCPEventCommandPacket.h"
#include "gvcp/GVCPEventDataCommandPacket.h"
#include "gvcp/GVCPMemoryReadCommandPacket.h"
#include "gvcp/GVCPMemoryWriteCommandPacket.h"
#include "gvcp/GVCPPacketResendCommandPacket.h"
#include "gvcp/GVCPRegisterReadCommandPacket.h"
#include "gvcp/GVCPRegisterWriteCommandPacket.h"
#include "tests/packets/TestBytes.h"

#include <QtEndian>
#include <gtest/gtest.h>

namespace {
// What a client that others wrote sent, or what the layout of the message says.
TEST(GVCPCommands, builtFromFieldsAsOnTheWire)
{
    EXPECT_EQ(GVCPRegisterReadCommandPacket(5, 0x0938, true).serialize(), hex("420100800004000500000938"));
    EXPECT_EQ(GVCPRegisterReadCommandPacket(0, 0x0938, true).serialize(), QByteArray());
    const GVCPRegisterReadCommandPacket silent(5, 0x0938, false);
    EXPECT_EQ(silent.serialize(), hex("420000800004000500000938"));
    const GVCPMemoryReadCommandPacket silentMemory(2, 0x1000, 8, false);
    EXPECT_EQ(silentMemory.serialize(), hex("42000084000800020000100000000008"));
    EXPECT_FALSE(silent.isAckRequired() || silentMemory.isAckRequired());
    EXPECT_EQ(GVCPRegisterWriteCommandPacket(12, 0x0938, 0x07d1, HostOrder).serialize(),
              hex("420000820008000c00000938000007d1"));
    EXPECT_EQ(GVCPRegisterWriteCommandPacket(12, 0x0938, qToBigEndian(0x07d1U), NetworkOrder).serialize(),
              hex("420000820008000c00000938000007d1"));
    EXPECT_EQ(GVCPMemoryReadCommandPacket(14, 0x48, 32, true).serialize(),
              hex("420100840008000e0000004800000020"));
    GVCPMemoryWriteCommandPacket write(27, 0xe8, hex("7261772d636c69656e74000000000000"));
    write.setFlags(GVCPPacket::AckRequired);
    EXPECT_EQ(write.serialize(), hex("420100860014001b000000e87261772d636c69656e74000000000000"));
}

TEST(GVCPCommands, registerSettersKeepWhatIsNotTheirs)
{
    GVCPRegisterReadCommandPacket read(hex("42010080000b0007 00000a00 00000938 abcdef"));
    EXPECT_EQ((Values{read.addressCount(), read.address(1), read.address(2), read.address(~0U)}),
              (Values{2, 0x938, 0, 0}));
    EXPECT_TRUE(read.isAckRequired());
    read.setAddress(0x12345678);
    EXPECT_EQ(read.payload(), hex("12345678"));

    GVCPRegisterWriteCommandPacket write(
        hex("420100820014 0007 00000a00 00000001 00000938 00000002 00000a04"));
    EXPECT_EQ(
        (Values{write.registerCount(), write.address(1), write.value(1), write.address(2), write.value(2)}),
        (Values{2, 0x938, 2, 0, 0}));
    write.setAddress(0xb00);
    EXPECT_EQ(write.payload(), hex("00000b00 00000001 00000938 00000002 00000a04"));
    write.setValue(3, HostOrder);
    EXPECT_EQ(write.payload(), hex("00000b00 00000003"));
}

TEST(GVCPCommands, memorySettersDoNotKnowWhatWasReceived)
{
    GVCPMemoryReadCommandPacket read(hex("420100840008000e 00000048 00000020"));
    EXPECT_EQ((Values{read.address(), read.count(), read.isAckRequired()}), (Values{0x48, 32, 1}));
    read.setAddress(0x68);
    EXPECT_EQ(read.payload(), hex("0000006800000000"));
    read.setCount(5);
    EXPECT_EQ(read.payload(), hex("0000006800000005"));

    GVCPMemoryWriteCommandPacket write(hex("420100860007001b 000000e8 726177"));
    EXPECT_EQ(write.address(), 0xe8U);
    EXPECT_EQ(write.data(), "raw");
    write.setData(hex("0102030405"));
    EXPECT_EQ(write.payload(), hex("00000000 01020304")) << "whole words travel";
    write.setAddress(1);
    EXPECT_EQ(write.payload(), hex("00000001 01020304"));
    write.setData(QByteArray(65536, 'x'));
    EXPECT_FALSE(write.isValid());
    EXPECT_EQ(write.data(), QByteArray());
}

// What recorded traffic doesn't have: places behind the last event, and what is cut.
TEST(GVCPCommands, readWhatIsThereOfACutField)
{
    const GVCPEventCommandPacket events(hex("420100c00028226a 000090f30002ed2f6a8ac4ba05805975 "
                                            "000090d600078e73a46d6753ec148cb4 3f9e9919878d972f"));
    EXPECT_EQ((Values{events.eventCount(), events.eventId(2), events.streamChannelIndex(2), events.blockId(2),
                      events.timestamp(2)}),
              (Values{2, 0, 0, 0, 0}));
    const GVCPEventDataCommandPacket event(
        hex("421000c2001b226d 0000908100030000 da71144896c8da19 7af027bc08d6af57 cc2165"));
    EXPECT_EQ(event.data(), hex("cc2165")) << "behind the fields of the layout with extended ids";
    const GVCPEventDataCommandPacket cutEvent(hex("420100c2000b226b 000090a10007b940 4be03d"));
    EXPECT_EQ(cutEvent.timestamp(), 0x4be0000000000000U) << "two of three bytes";
    EXPECT_EQ(cutEvent.data(), QByteArray());
    const GVCPActionCommandPacket action(hex("4201010000052272 d707107e 64"));
    EXPECT_EQ((Values{action.deviceKey(), action.groupKey(), action.groupMask()}),
              (Values{0xd707107e, 0x64000000, 0}));
}

Values allGetters(const QByteArray& bytes)
{
    const GVCPRegisterReadCommandPacket read(bytes);
    const GVCPRegisterWriteCommandPacket write(bytes);
    const GVCPMemoryReadCommandPacket readMemory(bytes);
    const GVCPMemoryWriteCommandPacket writeMemory(bytes);
    const GVCPEventCommandPacket events(bytes);
    const GVCPEventDataCommandPacket event(bytes);
    const GVCPPacketResendCommandPacket resend(bytes);
    const GVCPActionCommandPacket action(bytes);
    return {read.address(0),
            read.address(read.addressCount()),
            write.address(0),
            write.value(0),
            readMemory.address(),
            readMemory.count(),
            writeMemory.address(),
            quint64(writeMemory.data().size()),
            events.eventId(0),
            events.streamChannelIndex(0),
            events.blockId(0),
            events.timestamp(0),
            event.eventId(),
            event.streamChannelIndex(),
            event.blockId(),
            event.timestamp(),
            quint64(event.data().size()),
            resend.streamChannelIndex(),
            resend.blockId(),
            resend.firstPacketId(),
            resend.lastPacketId(),
            action.deviceKey(),
            action.groupKey(),
            action.groupMask()};
}

TEST(GVCPCommands, standDamage)
{
    const QByteArray good = hex("421100c0001b2268 000090b800060000 9755d4c13a902931 1a2b8ff1fd42a27e 001122");
    for (int size = 8; size <= good.size(); ++size) {
        QByteArray message = good.left(size);
        message[5] = char(size - 8);
        forEachDamage(message, [](const QByteArray& bytes) {
            const GVCPCommandPacket packet(bytes);
            EXPECT_EQ(packet.serialize(), packet.isValid() ? bytes : QByteArray());
            const Values read = allGetters(bytes);
            EXPECT_TRUE(packet.payloadSize() > 0 || read == Values(read.size(), 0));
        });
    }
}
} // namespace
