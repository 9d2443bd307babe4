#include "packets/IpAddress.h"
#include "packets/MacAddress.h"
#include "tests/packets/AddressRule.h"
#include "tests/packets/TestBytes.h"

#include <QtEndian>
#include <gtest/gtest.h>

namespace {
void expectSameMac(const QByteArray& text)
{
    MacAddress address(9, 9, 9, 9, 9, 9);
    const QByteArray expected = macByRule(text);
    EXPECT_EQ(address.parse(TightBytes(text).array()), !expected.isEmpty()) << text.toStdString();
    EXPECT_EQ(address.rawBytes(), expected.isEmpty() ? QByteArray(6, 9) : expected) << text.toStdString();
}

void expectSameIp(const QByteArray& text)
{
    IpAddress address(9);
    const QByteArray expected = ipByRule(text);
    EXPECT_EQ(address.parse(TightBytes(text).array()), !expected.isEmpty()) << text.toStdString();
    EXPECT_EQ(address.rawBytes(), expected.isEmpty() ? IpAddress(9).rawBytes() : expected)
        << text.toStdString();
}

// The text itself and every text that is one byte off.
void forTextsNear(const QByteArray& text, void (*check)(const QByteArray&))
{
    check(text);
    for (int at = 0; at <= text.size(); ++at) {
        check(QByteArray(text).remove(at, 1));
        for (int byte = 0; byte < 256; ++byte) {
            check(QByteArray(text).insert(at, char(byte)));
            check(QByteArray(text).replace(at, 1, QByteArray(1, char(byte))));
        }
    }
}

TEST(MacAddress, textIsReadByTheRule)
{
    forTextsNear("00:1A:2b:3c:4d:5E", expectSameMac);
    forTextsNear(hex("efbbbf") + "00:1a:2b:3c:4d:5e", expectSameMac); // a byte order mark
    for (const auto* text : {"", "00-1A-2b-3c-4d-5E", "abcdef", "0:1:2:3:4:5", "001A2b3c4d5E"})
        expectSameMac(text);
}

TEST(IpAddress, textIsReadByTheRule)
{
    forTextsNear("192.168.10.1", expectSameIp);
    forTextsNear("0.0.0.0", expectSameIp);
    forTextsNear(hex("efbbbf") + "1.2.3.4", expectSameIp);
    for (int number = 0; number < 1200; ++number) {
        const QByteArray text = QByteArray::number(number);
        for (const QByteArray& each : {text, text.rightJustified(3, '0'), "0" + text}) {
            expectSameIp(each + ".0.0.1");
            expectSameIp("10.1." + each + ".255");
        }
    }
    for (const auto* text : {"", "1.2.3", "1.2.3.4.5", "12.3.4..", "1234567.1", "256.0.0.1",
                             "010.001.000.001", "1.2.3.4.", "....", "1..2.3"})
        expectSameIp(text);
}

TEST(MacAddress, formsAgree)
{
    const MacAddress address(quint64(0xffff060504030201U));
    const quint8 bytes[] = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(address, MacAddress(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(address, MacAddress(bytes));
    EXPECT_EQ(address.toUInt64(), 0x060504030201U);
    EXPECT_EQ(address.rawBytes(), hex("01 02 03 04 05 06"));
    EXPECT_EQ(address.rawBytes().constData(), address.rawBytes().constData());
    EXPECT_EQ(MacAddress(QStringLiteral("00:1A:2b:3c:4d:5E")).toByteArray(":"), "00:1a:2b:3c:4d:5e");
    EXPECT_EQ(MacAddress(std::string("abcdef")).toStdString(""), "616263646566");
    EXPECT_EQ(MacAddress(QStringLiteral("\u00e9\u00e9\u00e9")).toString("--"),
              QStringLiteral("c3--a9--c3--a9--c3--a9"));
    EXPECT_EQ(MacAddress(std::string("\xff\xff\xff\xff\xff\xff")),
              MacAddress()); // not UTF-8, so no six bytes
    for (int i = 0; i < 6; ++i) {
        QByteArray other(6, '\xff');
        EXPECT_TRUE(MacAddress(other).isBroadcast());
        other[i] = char(0x7f);
        EXPECT_FALSE(MacAddress(other).isBroadcast());
        EXPECT_NE(MacAddress(other), MacAddress::broadcast());
    }
}

TEST(IpAddress, formsAgree)
{
    IpAddress address(0xc0a80001U);
    EXPECT_EQ(address.toString(), QStringLiteral("192.168.0.1"));
    EXPECT_EQ(address.toByteArray(), "192.168.0.1");
    const IpAddress copy(address);
    EXPECT_TRUE(address.parse(address.rawBytes()));
    EXPECT_EQ(address, copy);
    EXPECT_TRUE(address.parse(hex("c0 a8 00 01")));
    EXPECT_EQ(address.toUInt32(), qToBigEndian(0xc0a80001U)); // 1.0.168.192 on a little-endian host
    EXPECT_TRUE(address.parse(std::string("1.22.255.0")));
    EXPECT_EQ(address.toStdString(), "1.22.255.0");
    EXPECT_TRUE(address.parse(QStringLiteral("255.255.255.255")));
    EXPECT_TRUE(address.isBroadcast());
    EXPECT_TRUE(address.parse(QStringLiteral("1.23")) && address.rawBytes() == "1.23")
        << "four bytes, no text";
    EXPECT_TRUE(address.parse(std::string("1.24")) && address.rawBytes() == "1.24");
    address.clear();
    EXPECT_EQ(address, IpAddress());
    EXPECT_NE(address, IpAddress::broadcast());
}
} // namespace
