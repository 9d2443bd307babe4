#include "packets/UdpPacket.h"

#include "gvcp/GVCPAckPacket.h"
#include "gvcp/GVCPCommandPacket.h"
#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"
#include "packets/DhcpPacket.h"
#include "packets/FrameRoom.h"
#include "packets/InternetChecksum.h"
#include "packets/IpAddress.h"

namespace {
constexpr int sourcePortAt = 0, destinationPortAt = sourcePortAt + 2, lengthAt = destinationPortAt + 2,
              checksumAt = lengthAt + 2, dataAt = checksumAt + 2;
static_assert(dataAt == 8, "RFC 768: 8 bytes");

// Its complement would be 0, which stands for a datagram without a checksum.
constexpr quint16 sumWithoutComplement = 0xffff;
} // namespace

struct UdpPacket::D {
    quint16 sourcePort = 0;
    quint16 destinationPort = 0;
    quint16 length = 0;
    quint16 receivedChecksum = 0;
    bool checksumIsReceived = false;
    quint32 partialSum = 0; // all but the pseudo-header, carries not folded
    bool checksumDirty = true;
    bool valid = true;
    bool checksumEnabled = true;
    ByteSlice data;

    D() = default;
    D(quint16 from, quint16 to, bool withChecksum)
        : sourcePort(from)
        , destinationPort(to)
        , checksumEnabled(withChecksum)
    {
    }

    void parse(ByteSlice&& bytes);
    void setData(ByteSlice&& bytes);
    void setPort(quint16& port, quint16 value);
    quint16 lengthOfData() const { return quint16(dataAt + data.size()); }
    void updatePartialSum();
    quint16 checksum(const IpAddress& source, const IpAddress& destination);
};

void UdpPacket::D::parse(ByteSlice&& bytes)
{
    sourcePort = readField<quint16>(bytes, sourcePortAt);
    destinationPort = readField<quint16>(bytes, destinationPortAt);
    receivedChecksum = readField<quint16>(bytes, checksumAt);
    const int declaredLength = readField<quint16>(bytes, lengthAt);
    bytes.narrow(dataAt, declaredLength - dataAt);
    setData(std::move(bytes));
    valid = declaredLength == dataAt + data.size();
    checksumDirty = false;
    checksumIsReceived = true;
}

void UdpPacket::D::setData(ByteSlice&& bytes)
{
    checksumDirty = true;
    data = std::move(bytes);
    valid = data.size() <= payloadSizeMaxBytes;
    length = lengthOfData();
}

void UdpPacket::D::setPort(quint16& port, quint16 value)
{
    checksumDirty = checksumDirty || port != value;
    port = value;
}

void UdpPacket::D::updatePartialSum()
{
    partialSum = quint32(quint32(sourcePort) + destinationPort + dataAt + (quint32(data.size()) & 0xffff) +
                         sumOfWords(data.constData(), std::size_t(data.size())));
    checksumDirty = false;
    checksumIsReceived = false;
}

quint16 UdpPacket::D::checksum(const IpAddress& source, const IpAddress& destination)
{
    if (!checksumEnabled)
        return 0;
    if (checksumIsReceived && !checksumDirty)
        return receivedChecksum;
    if (checksumDirty)
        updatePartialSum();
    // A 32-bit word folds to the sum of its halves.
    const quint16 sum = foldedSum(quint64(partialSum) + source.toUInt32() + destination.toUInt32() +
                                  Protocol + lengthOfData());
    return sum == sumWithoutComplement ? sum : quint16(~sum);
}

UdpPacket::UdpPacket(quint16 sourcePort, quint16 destinationPort, const QByteArray& data,
                     bool checksumEnabled)
    : d(sourcePort, destinationPort, checksumEnabled)
{
    setData(data);
}

UdpPacket::UdpPacket(quint16 sourcePort, quint16 destinationPort, const ApplicationPacket& packet)
    : d(sourcePort, destinationPort, true)
{
    d->setData(ByteSlice(packet.serialize()));
}

UdpPacket::UdpPacket(const QByteArray& bytes)
    : UdpPacket(ByteSlice(bytes))
{
}

UdpPacket::UdpPacket(ByteSlice&& bytes)
{
    d->parse(std::move(bytes));
}

UdpPacket::UdpPacket(const UdpPacket& other)
    : TransportPacket(other)
    , d(*other.d)
{
    d->checksumEnabled = true;
}

UdpPacket::UdpPacket(const TransportPacket& other)
{
    setData({});
    if (const auto* same = dynamic_cast<const UdpPacket*>(&other))
        *d = *same->d;
    d->checksumEnabled = true;
}

UdpPacket::~UdpPacket() = default;

quint32 UdpPacket::headerSize() const
{
    return dataAt;
}

quint32 UdpPacket::payloadSize() const
{
    return quint32(d->data.size());
}

quint32 UdpPacket::totalSize() const
{
    return d->length;
}

QByteArray UdpPacket::serialize(const IpAddress& source, const IpAddress& destination) const
{
    return d->valid ? serializeIn({}, source, destination) : QByteArray();
}

QByteArray UdpPacket::serializeIn(const FrameRoom& room, const IpAddress& source,
                                  const IpAddress& destination) const
{
    const D& r = *d;
    if (!r.valid)
        return room.array(0);
    QByteArray datagram = room.array(dataAt + r.data.size());
    char* const to = datagram.data() + room.before;
    qToBigEndian(r.sourcePort, to + sourcePortAt);
    qToBigEndian(r.destinationPort, to + destinationPortAt);
    qToBigEndian(r.lengthOfData(), to + lengthAt);
    qToBigEndian(checksum(source, destination), to + checksumAt);
    std::memcpy(to + dataAt, r.data.constData(), std::size_t(r.data.size()));
    return datagram;
}

quint32 UdpPacket::length() const
{
    return payloadSize() + headerSize();
}

bool UdpPacket::isValid() const
{
    return d->valid;
}

QByteArray UdpPacket::protocolName() const
{
    return QByteArrayLiteral("UDP");
}

quint8 UdpPacket::protocol() const
{
    return Protocol;
}

const QByteArray& UdpPacket::payload() const
{
    return d->data.array();
}

quint16 UdpPacket::sourcePort() const
{
    return d->sourcePort;
}

quint16 UdpPacket::destinationPort() const
{
    return d->destinationPort;
}

void UdpPacket::setSourcePort(quint16 port)
{
    d->setPort(d->sourcePort, port);
}

void UdpPacket::setDestinationPort(quint16 port)
{
    d->setPort(d->destinationPort, port);
}

void UdpPacket::setData(const QByteArray& data)
{
    d->setData(ByteSlice(data));
}

quint16 UdpPacket::checksum(const IpAddress& source, const IpAddress& destination) const
{
    return d->checksum(source, destination);
}

ApplicationPacket* UdpPacket::applicationPacket() const
{
    const D& r = *d;
    if (GVCPCommandPacket::isCommandPort(r.sourcePort, r.destinationPort) ||
        GVCPAckPacket::isAckPort(r.sourcePort, r.destinationPort))
        return GVCPPacket::create(ByteSlice(r.data));
    if (DhcpPacket::isDhcpPorts(r.sourcePort, r.destinationPort))
        return new DhcpPacket(ByteSlice(r.data));
    return nullptr;
}
