#include "gvcp/GVCPDiscoveryAckPacket.h"
#include "tests/packets/TestBytes.h"

#include <QByteArrayList>
#include <QtEndian>
#include <gtest/gtest.h>

namespace {
QByteArray text(const QByteArray& bytes, int width)
{
    return bytes.leftJustified(width, '\0');
}

// A device's recorded answer, but for manufacturerInfo and userName, which filled their fields.
const QByteArray recorded = hex("00000003 00f8ffff 00020001 80000001 0000 024b00000062 80000007 00000005") +
                            QByteArray(12, '\0') + hex("0a4d0162") + QByteArray(12, '\0') + hex("ffffff00") +
                            QByteArray(12, '\0') + hex("0a4d0101") + text("Lab", 32) + text("Strict", 32) +
                            text("1.0 b\xe4ta", 32) + text("some notes", 48) + text("STRICT1", 16) +
                            text("fifteen bytes o", 16);
constexpr int textsAt = 8 + 72, infoAt = textsAt + 96;

QByteArray withInfo(const QByteArray& info)
{
    return QByteArray(recorded).replace(infoAt, 48, text(info, 48));
}

TEST(GVCPDiscoveryAckPacket, readsAndWritesTheBlock)
{
    const TightBytes tight(recorded);
    const GVCPDiscoveryAckPacket packet(tight.array());
    EXPECT_EQ((Values{packet.specVersionMajor(), packet.specVersionMinor(), packet.deviceMode(),
                      packet.ipConfigOptions(), packet.ipConfigCurrent(), packet.currentIp().toUInt32(),
                      packet.subnetMask(), packet.defaultGateway().toUInt32()}),
              (Values{2, 1, 0x80000001, 0x80000007, 5, 0x0a4d0162, 0xffffff00, 0x0a4d0101}));
    EXPECT_EQ(packet.macAddress(), MacAddress(2, 0x4b, 0, 0, 0, 0x62));
    const QByteArrayList texts{packet.manufacturerName(), packet.modelName(),    packet.deviceVersion(),
                               packet.manufacturerInfo(), packet.serialNumber(), packet.userName()};
    EXPECT_EQ(texts.join('|'), "Lab|Strict|1.0 b\xe4ta|some notes|STRICT1|fifteen bytes o");
    EXPECT_EQ(packet.serialize(), recorded);
    EXPECT_TRUE(packet.isValid());

    GVCPDiscoveryAckPacket built(0, 0xffff);
    built.setSpecVersionMajor(packet.specVersionMajor());
    built.setSpecVersionMinor(packet.specVersionMinor());
    built.setDeviceMode(packet.deviceMode());
    built.setMacAddress(packet.macAddress());
    built.setIpConfigOptions(packet.ipConfigOptions());
    built.setIpConfigCurrent(packet.ipConfigCurrent());
    built.setCurrentIp(packet.currentIp());
    built.setSubnetMask(packet.subnetMask());
    built.setDefaultGateway(packet.defaultGateway());
    built.setManufacturerName(packet.manufacturerName());
    built.setModelName(packet.modelName());
    built.setDeviceVersion(packet.deviceVersion());
    built.setManufacturerInfo(packet.manufacturerInfo());
    built.setSerialNumber(packet.serialNumber());
    built.setUserName(packet.userName());
    EXPECT_EQ(built.serialize(), recorded);
}

TEST(GVCPDiscoveryAckPacket, saysThatItsPayloadIsTheBlock)
{
    const GVCPDiscoveryAckPacket built(0x8001, 0);
    EXPECT_FALSE(built.isValid());
    EXPECT_EQ(built.serialize(), hex("8001 0003 00f8 0000") + QByteArray(248, '\0')) << "with the id 0 too";
    EXPECT_EQ(built.payloadLength(), 0) << "what the base holds";
    QByteArray shorter = recorded.left(8 + 100);
    shorter[5] = 100;
    const GVCPDiscoveryAckPacket cut(shorter);
    EXPECT_TRUE(cut.isValid());
    EXPECT_EQ(cut.totalSize(), 256U);
    EXPECT_EQ(cut.serialize(), recorded.left(8 + 75) + QByteArray(248 - 75, '\0'));
    const GVCPDiscoveryAckPacket wrongLength(recorded.left(8 + 100));
    EXPECT_FALSE(wrongLength.isValid());
    EXPECT_EQ(wrongLength.manufacturerName(), "Lab") << "read all the same";
    EXPECT_EQ(GVCPDiscoveryAckPacket(recorded + QByteArray(65536, 'x')).modelName(), "") << "too large";
}

TEST(GVCPDiscoveryAckPacket, textsFillTheirFields)
{
    const QByteArray full(48, 'x'), inner = "abc" + QByteArray(1, '\0') + "d";
    EXPECT_EQ(GVCPDiscoveryAckPacket(withInfo(full)).manufacturerInfo(), full) << "no zero at all";
    EXPECT_EQ(GVCPDiscoveryAckPacket(withInfo(inner)).manufacturerInfo(), text(inner, 48));
    EXPECT_EQ(GVCPDiscoveryAckPacket(withInfo(full)).serialize(), withInfo(full.left(47)));
    GVCPDiscoveryAckPacket packet(0, 1);
    packet.setManufacturerName(QByteArray(40, 'n'));
    packet.setSerialNumber(QByteArray(16, 's'));
    EXPECT_EQ(packet.payload().mid(72, 32), text(QByteArray(31, 'n'), 32));
    EXPECT_EQ(packet.payload().mid(216, 16), text(QByteArray(15, 's'), 16));
}

// The yardstick goes byte by byte.
QByteArray readPlainly(const QByteArray& field)
{
    const int length = int(qstrnlen(field.constData(), uint(field.size())));
    return field.mid(length).count('\0') == field.size() - length ? field.left(length) : field;
}

TEST(GVCPDiscoveryAckPacket, readsTextsByTheWordAsByTheByte)
{
    for (const char filler : {'x', '\x01', '\x80', '\xff'})
        for (int length = 0; length <= 48; ++length)
            for (int other = length; other <= 48; ++other)
                for (const int there : {48, 47, 41, 33, 8, 3}) {
                    QByteArray field = text(QByteArray(length, filler), 48);
                    if (other < 48)
                        field[other] = filler;
                    field.truncate(there);
                    const TightBytes tight(recorded.left(infoAt) + field);
                    EXPECT_EQ(GVCPDiscoveryAckPacket(tight.array()).manufacturerInfo(), readPlainly(field))
                        << length << ' ' << other << ' ' << there;
                }
}

TEST(GVCPDiscoveryAckPacket, longTextHeldRefusesWhatComesNext)
{
    for (const int size : {32, 33}) {
        GVCPDiscoveryAckPacket packet(withInfo(QByteArray(size, 'x')));
        EXPECT_EQ(packet.isPayloadValid(QByteArray()), size == 32);
        packet.parse(recorded.mid(8), NetworkOrder);
        EXPECT_EQ(packet.manufacturerInfo(), size == 32 ? "some notes" : QByteArray(33, 'x'));
        packet.setPayload("pay", NetworkOrder);
        EXPECT_EQ(packet.payloadLength(), size == 32 ? 3 : 0);
    }
}

TEST(GVCPDiscoveryAckPacket, hostOrderTakesNumbersUnchanged)
{
    GVCPDiscoveryAckPacket packet(0, 1);
    packet.parse(recorded.mid(8), HostOrder);
    EXPECT_EQ((Values{packet.specVersionMajor(), packet.subnetMask(), packet.currentIp().toUInt32()}),
              (Values{qToBigEndian(quint16(2)), qToBigEndian(0xffffff00U), qToBigEndian(0x0a4d0162U)}));
    EXPECT_EQ(packet.macAddress(), MacAddress(2, 0x4b, 0, 0, 0, 0x62));
    packet.parse(recorded.mid(8, 3), NetworkOrder);
    EXPECT_EQ(packet.specVersionMajor(), 2);
    EXPECT_EQ(packet.modelName(), "") << "a short block leaves nothing of the one before";
}
} // namespace
