#include "packets/EthernetFrame.h"
#include "packets/InternetPacket.h"
#include "packets/IpAddress.h"
#include "tests/packets/TestBytes.h"

#include <gtest/gtest.h>

namespace {
const MacAddress host(0x02, 0x4b, 0, 0, 0, 0x01), camera(0x02, 0x4b, 0, 0, 0, 0x20);
// Recorded: an echo request without and with a tag (VLAN 100).
const QByteArray plainFrame = hex("024b00000062024b00000001 0800 4500001cd86340004001 4b81 0a4d0101 0a4d0162"
                                  "0800b12d46d10001");
const QByteArray taggedFrame =
    hex("024b00000020024b00000001 8100 a064 0800 4500001cd86340004001 4b81 0a4d0101"
        "0a4d0162 0800b12d46d10001");

// A child whose bytes change.
class Child : public InternetPacket {
public:
    explicit Child(int size)
        : bytes(size, 'x')
    {
    }
    quint32 headerSize() const override { return 0; }
    quint32 payloadSize() const override { return quint32(bytes.size()); }
    QByteArray serialize() const override { return bytes; }
    quint16 etherType() const override { return 0x88b5; }
    quint8 protocol() const override { return 0; }
    QByteArray payload() const override { return bytes; }
    const IpAddress& sourceAddress() const override { return m_address; }
    const IpAddress& destinationAddress() const override { return m_address; }

    QByteArray bytes;

private:
    IpAddress m_address;
};

struct Parsed {
    const char* name;
    QByteArray bytes;
    quint32 headerSize;
    quint16 etherType;
    quint32 totalSize;
    bool kept;
};

const Parsed parsed[] = {
    {"nothing", {}, 0, 0, 60, false},
    {"oneByteShort", plainFrame.left(13), 0, 0, 60, false},
    {"headerAlone", plainFrame.left(14), 14, 0x0800, 60, true},
    {"tagCutShort", taggedFrame.left(17), 0, 0, 60, false},
    {"tagAlone", taggedFrame.left(18), 18, 0x0800, 60, true},
    {"plain", plainFrame, 14, 0x0800, 60, true},
    {"tagged", taggedFrame, 18, 0x0800, 60, true},
    {"twoTags", taggedFrame.left(16) + taggedFrame.mid(12), 18, 0x8100, 60, true},
    {"lengthForType", plainFrame.left(12) + hex("0026") + QByteArray(47, 'p'), 14, 0x0026, 61, true},
    {"jumbo", plainFrame + QByteArray(9000, 'p'), 14, 0x0800, 9042, true},
};

TEST(EthernetFrame, parsesHeaderAndKeepsAllBytes)
{
    for (const Parsed& each : parsed) {
        SCOPED_TRACE(each.name);
        const EthernetFrame frame(each.bytes);
        EXPECT_EQ(frame.layer(), 2U);
        EXPECT_EQ(frame.headerSize(), each.headerSize);
        EXPECT_EQ(frame.etherType(), each.etherType);
        EXPECT_EQ(frame.totalSize(), each.totalSize);
        EXPECT_EQ(frame.payloadSize(), each.totalSize - each.headerSize);
        EXPECT_EQ(frame.serialize(), each.kept ? each.bytes : QByteArray());
        EXPECT_FALSE(frame.hasCrc());
        if (each.kept) {
            EXPECT_EQ(frame.serialize().constData(), each.bytes.constData()) << "the payload was copied";
            EXPECT_EQ(frame.source(), host);
        }
    }
}

TEST(EthernetFrame, everyPrefixHasAllGetters)
{
    for (const QByteArray& whole : {plainFrame, taggedFrame}) {
        for (int length = 0; length <= whole.size(); ++length) {
            const TightBytes tight(whole.left(length));
            const EthernetFrame frame(tight.array());
            EXPECT_EQ(frame.destination(), length < 6 ? MacAddress() : MacAddress(whole.left(6)));
            EXPECT_EQ(frame.source(), length < 12 ? MacAddress() : host);
            const bool kept = length >= (whole == taggedFrame ? 18 : 14);
            EXPECT_EQ(frame.serialize(), kept ? whole.left(length) : QByteArray());
            EXPECT_EQ(frame.totalSize(), 60U);
            EXPECT_EQ(frame.payloadSize(), 60U - frame.headerSize());
            const std::unique_ptr<EthernetFrame> copy(frame.clone(true, 0));
            EXPECT_EQ(copy->serialize().size(), (kept ? length : 0) + 4);
        }
    }
}

TEST(EthernetFrame, builtFromPayloadHoldsItUnparsed)
{
    const EthernetFrame frame(host, camera, plainFrame.mid(12));
    EXPECT_EQ(frame.serialize(), camera.rawBytes() + host.rawBytes() + plainFrame.mid(12));
    EXPECT_EQ(frame.headerSize(), 0U);
    EXPECT_EQ(frame.etherType(), 0);
    EXPECT_EQ(frame.payloadSize(), 60U);
    EXPECT_EQ(frame.internetPacket(), nullptr);
    EXPECT_EQ(EthernetFrame(host, camera, hex("08")).serialize(), QByteArray());
    EXPECT_EQ(EthernetFrame(host, camera, hex("0800")).serialize().size(), 14);
}

TEST(EthernetFrame, builtFromChildFollowsIt)
{
    Child child(45);
    const EthernetFrame frame(host, camera, &child);
    const QByteArray header = camera.rawBytes() + host.rawBytes() + hex("88b5");
    for (const int size : {0, 45, 46, 47, 1500}) {
        child.bytes = QByteArray(size, char('a' + size % 7));
        const quint32 expected = quint32(std::max(size, 46));
        EXPECT_EQ(frame.serialize(), header + child.bytes.leftJustified(46, '\0')) << size;
        EXPECT_EQ(frame.totalSize(), 14 + expected);
        EXPECT_EQ(frame.payloadSize(), expected);
    }
    EXPECT_EQ(frame.headerSize(), 14U);
    EXPECT_EQ(frame.etherType(), 0);
    EXPECT_EQ(frame.internetPacket(), nullptr) << "a child of a class that isn't known";

    const EthernetFrame childless(host, camera, static_cast<InternetPacket*>(nullptr));
    EXPECT_EQ(childless.serialize(), QByteArray());
    EXPECT_EQ(childless.payloadSize(), 46U);
    EXPECT_EQ(childless.internetPacket(), nullptr);
}

TEST(EthernetFrame, appendsFrameCheckSequence)
{
    const QByteArray zeros(14, '\0');
    EthernetFrame frame(zeros), flipped(zeros);
    frame.appendCrc(0);
    flipped.appendCrc(1);
    EXPECT_TRUE(frame.hasCrc());
    EXPECT_EQ(frame.serialize(), zeros + hex("c779bbd1"));
    EXPECT_EQ(flipped.serialize(), zeros + hex("c679bbd1"));
    EXPECT_EQ(zeros, QByteArray(14, '\0')) << "the caller's array changed";
    frame.appendCrc(0);
    EXPECT_EQ(frame.serialize().right(4), hex("1cdf4421")) << "residue of a frame with its sequence";

    Child child(10);
    EthernetFrame built(host, camera, &child);
    built.appendCrc(0);
    EXPECT_TRUE(built.hasCrc());
    EXPECT_EQ(built.serialize().size(), 60);
}

TEST(EthernetFrame, clonesToRawBackedWithTheCallersValues)
{
    Child child(10);
    EthernetFrame frame(host, camera, &child);
    EXPECT_EQ(frame.userValue(), -1);
    EXPECT_FALSE(frame.userFlag());
    frame.setUserValue(-7);
    frame.setUserFlag(true);
    EthernetFrame expected(frame.serialize());
    expected.appendCrc(0x80000000U);
    const std::unique_ptr<EthernetFrame> copy(frame.clone(true, 0x80000000U)), again(copy->clone(false, 1));
    child.bytes = QByteArray(100, 'y');
    EXPECT_TRUE(copy->hasCrc());
    EXPECT_EQ(copy->serialize(), expected.serialize());
    EXPECT_EQ(copy->serialize().size(), 64);
    EXPECT_EQ(copy->etherType(), 0x88b5);
    EXPECT_EQ(copy->userValue(), -7);
    EXPECT_TRUE(copy->userFlag());
    EXPECT_FALSE(again->hasCrc());
    EXPECT_EQ(again->serialize(), copy->serialize());
    EXPECT_EQ(again->userValue(), -7);
    EXPECT_TRUE(again->userFlag());
}
} // namespace
