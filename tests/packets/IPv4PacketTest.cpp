#include "packets/IPv4Packet.h"
#include "packets/IcmpPacket.h"
#include "packets/InternetChecksum.h"
#include "packets/IpAddress.h"
#include "tests/packets/TestBytes.h"

#include <QtEndian>
#include <gtest/gtest.h>

#include <memory>

namespace {
const IpAddress host(0x0a4d0101), camera(0x0a4d0162);
// Recorded: an echo reply with padding behind it, an echo request with options (no-operation, end).
const QByteArray padded =
    hex("4500001c00024000400123e30a4d01620a4d0101 0000b92d46d10001 000000000000000000000000");
const QByteArray options = hex("460000207ea700004001e2380a4d01010a4d0162 01010100 08007284857a0001");

// First bytes of a good packet with others in front.
QByteArray withFirst(const char* digits)
{
    return hex(digits) + padded.mid(hex(digits).size());
}

/// A next layer whose numbers all differ, and whose bytes are the addresses that it is given.
class Child : public TransportPacket {
public:
    quint32 headerSize() const override { return 1; }
    quint32 payloadSize() const override { return 29; }
    quint32 length() const override { return 100; }
    bool isValid() const override { return true; }
    QByteArray protocolName() const override { return {}; }
    quint8 protocol() const override { return noProtocol; }
    const QByteArray& payload() const override { return m_payload; }
    QByteArray serialize(const IpAddress& source, const IpAddress& destination) const override
    {
        return source.toByteArray() + '>' + destination.toByteArray();
    }

private:
    const QByteArray m_payload;
};

struct Parsed {
    const char* name;
    QByteArray bytes;
    quint32 headerSize;
    quint32 totalSize;
    QByteArray payload;
};

const Parsed parsed[] = {{"padded", padded, 20, 28, padded.mid(20, 8)},
                         {"options", options, 24, 32, options.mid(24)},
                         {"cutShort", withFirst("450003e8"), 20, 1000, padded.mid(20)},
                         {"emptyPayload", withFirst("45000014"), 20, 20, {}},
                         {"totalLengthZero", withFirst("45000000"), 20, 0, padded.mid(20)},
                         {"totalLengthBelowHeader", withFirst("46000017"), 24, 23, padded.mid(24)},
                         {"headerTooShort", withFirst("44"), 16, 0, {}},
                         {"headerBehindTheEnd", withFirst("4f000040"), 60, 64, {}},
                         {"otherVersion", withFirst("65"), 20, 28, padded.mid(20, 8)}};

TEST(IPv4Packet, parsesWhateverTheHeaderSays)
{
    for (const Parsed& each : parsed) {
        SCOPED_TRACE(each.name);
        const TightBytes tight(each.bytes);
        const std::unique_ptr<InternetPacket> packet(InternetPacket::create(0x0800, tight.array()));
        EXPECT_EQ(packet->layer(), 3U);
        EXPECT_EQ(packet->etherType(), 0x0800);
        EXPECT_EQ(packet->headerSize(), each.headerSize);
        EXPECT_EQ(packet->totalSize(), each.totalSize);
        EXPECT_EQ(packet->payloadSize(), quint32(each.payload.size()));
        EXPECT_EQ(packet->payload(), each.payload);
        EXPECT_EQ(packet->protocol(), 1);
        EXPECT_EQ(packet->sourceAddress().toUInt32(), each.bytes.mid(12, 4).toHex().toUInt(nullptr, 16));
        EXPECT_EQ(packet->destinationAddress().toUInt32(), each.bytes.mid(16, 4).toHex().toUInt(nullptr, 16));
    }
}

TEST(IPv4Packet, everyPrefixGivesShortFields)
{
    for (int length = 0; length <= options.size(); ++length) {
        const TightBytes tight(options.left(length));
        const IPv4Packet packet(tight.array());
        EXPECT_EQ(packet.headerSize(), length > 0 ? 24U : 0U);
        EXPECT_EQ(packet.totalSize(), length > 3 ? 32U : 0U);
        EXPECT_EQ(packet.protocol(), length > 9 ? 1 : 0);
        EXPECT_EQ(packet.sourceAddress() == host, length >= 16);
        EXPECT_EQ(packet.destinationAddress() == camera, length >= 20);
        EXPECT_EQ(packet.payload(), options.left(length).mid(24));
        EXPECT_EQ(packet.serialize().mid(20), packet.payload());
        const std::unique_ptr<TransportPacket> next(packet.transportPacket());
        EXPECT_EQ(next != nullptr, length > 9);
    }
}

TEST(IPv4Packet, writesNewHeaderWithDefaults)
{
    QByteArray bytes; // outlives its packet
    {
        const IPv4Packet empty(IpAddress(0xc0a80001), IpAddress(0xc0a80002), 17, QByteArray());
        EXPECT_EQ(empty.lengthField(), 0);
        bytes = empty.serialize();
        EXPECT_EQ(empty.lengthField(), qToBigEndian(quint16(20)));
        EXPECT_EQ(empty.totalSize(), 20U);
    }
    EXPECT_EQ(bytes, hex("45000014 00004000 ff11fa84 c0a80001 c0a80002"));

    const IPv4Packet packet(options);
    const QByteArray written = hex("4500001c00004000ff0164e40a4d01010a4d0162") + options.mid(24);
    EXPECT_EQ(packet.serialize(), written);
    EXPECT_EQ(packet.headerSize(), 24U);
    EXPECT_EQ(foldedSum(sumOfWords(packet.serialize().constData(), 20)), 0xffff);
    const std::unique_ptr<IPv4Packet> clone(packet.clone());
    EXPECT_EQ(clone->headerSize(), 20U);
    EXPECT_EQ(clone->serialize(), written);
    const IPv4Packet large(host, camera, 17, QByteArray(65520, 'x'));
    EXPECT_EQ(large.serialize().mid(2, 2), hex("0004")) << "wraps";
    EXPECT_EQ(large.totalSize(), 4U);

    char memory[] = "bare";
    const IPv4Packet bare(host, camera, TransportPacket::noProtocol, QByteArray::fromRawData(memory, 4));
    const QByteArray kept = bare.serialize();
    memory[0] = 'c';
    EXPECT_EQ(kept, "bare");
    EXPECT_EQ(bare.lengthField(), 0);
}

TEST(IPv4Packet, carriesChild)
{
    IcmpPacket child(8, 0, "data");
    const IPv4Packet packet(host, camera, &child);
    EXPECT_EQ(packet.serialize(), IPv4Packet(host, camera, 1, child.serialize(host, camera)).serialize());
    EXPECT_EQ(std::unique_ptr<IPv4Packet>(packet.clone())->payload(), child.serialize(host, camera));
    const std::unique_ptr<TransportPacket> next(packet.transportPacket());
    EXPECT_NE(next.get(), &child);
    EXPECT_EQ(next->payload(), "data");
    const std::unique_ptr<InternetPacket> copy(InternetPacket::copyOf(packet));
    EXPECT_EQ(copy->lengthField(), 0) << "the header image was copied";
    EXPECT_EQ(copy->serialize(), packet.serialize());
    EXPECT_EQ(IPv4Packet(*copy).lengthField(), 0);
    EXPECT_EQ(IPv4Packet(*copy).serialize(), packet.serialize());

    Child odd;
    const IPv4Packet other(host, camera, &odd);
    EXPECT_EQ(other.protocol(), TransportPacket::noProtocol);
    EXPECT_EQ(other.headerSize(), 20U);
    EXPECT_EQ(other.payloadSize(), 30U);
    EXPECT_EQ(other.totalSize(), 50U);
    EXPECT_EQ(other.payload(), "10.77.1.1>10.77.1.98");
    EXPECT_EQ(other.serialize().left(10), hex("45000078 00004000 ffff")) << "a header in any case";
    EXPECT_EQ(other.serialize().mid(12), hex("0a4d0101 0a4d0162") + other.payload());
}

TEST(InternetPacket, unknownTypesHaveNoClass)
{
    EXPECT_EQ(InternetPacket::create(0x86dd, padded), nullptr);
    EXPECT_EQ(IPv4Packet(withFirst("4500001c0002400040 06")).transportPacket(), nullptr);
}

TEST(InternetChecksum, addsWordsAndTheOddByteAsHighByte)
{
    QByteArray bytes(300000, '\xff');
    for (int i = 0; i < 100; ++i)
        bytes[i] = char(i * 77);
    for (const int length : {0, 1, 2, 3, 15, 16, 17, 33, 99, 131071, 131072, 131073, 299999, 300000}) {
        quint64 sum = 0;
        for (int i = 0; i < length; ++i)
            sum += quint64(quint8(bytes[i])) << (i % 2 == 0 ? 8 : 0);
        EXPECT_EQ(sumOfWords(bytes.constData(), std::size_t(length)), sum) << length;
    }
    EXPECT_EQ(foldedSum(0x1ffff), 1);
    EXPECT_EQ(foldedSum(0xffff), 0xffff);
}
} // namespace
