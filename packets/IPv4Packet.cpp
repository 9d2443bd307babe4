#include "packets/IPv4Packet.h"

#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"
#include "packets/FrameRoom.h"
#include "packets/InternetChecksum.h"
#include "packets/IpAddress.h"
#include "packets/TransportPacket.h"

#include <array>

namespace {
constexpr int versionAt = 0, serviceAt = versionAt + 1, totalLengthAt = serviceAt + 1,
              identificationAt = totalLengthAt + 2, fragmentAt = identificationAt + 2,
              timeToLiveAt = fragmentAt + 2, protocolAt = timeToLiveAt + 1, checksumAt = protocolAt + 1,
              sourceAt = checksumAt + 2, destinationAt = sourceAt + 4, headerSizeBytes = destinationAt + 4;
static_assert(headerSizeBytes == 20, "RFC 791: header without options");

constexpr quint8 versionAndHeaderSize = 0x45;
constexpr quint16 dontFragment = 0x4000;
constexpr quint8 timeToLive = 255;
} // namespace

struct IPv4Packet::D {
    quint8 protocol = TransportPacket::noProtocol;
    std::array<char, headerSizeBytes> header{};
    TransportPacket* child = nullptr;
    quint8 headerSize = headerSizeBytes;
    quint16 totalLength = 0;
    ByteSlice data;
    IpAddress source;
    IpAddress destination;

    void parse(ByteSlice&& bytes);
    void copyFrom(const D& other);
    bool writeHeader();
    ByteSlice payload() const
    {
        return child != nullptr ? ByteSlice(child->serialize(source, destination)) : data;
    }
};

void IPv4Packet::D::parse(ByteSlice&& bytes)
{
    protocol = readField<quint8>(bytes, protocolAt);
    source = IpAddress(readField<quint32>(bytes, sourceAt));
    destination = IpAddress(readField<quint32>(bytes, destinationAt));
    headerSize = quint8((readField<quint8>(bytes, versionAt) & 0x0f) * 4);
    if (headerSize < headerSizeBytes)
        return;
    totalLength = readField<quint16>(bytes, totalLengthAt);
    bytes.narrow(headerSize, totalLength - headerSize);
    data = std::move(bytes);
}

// All but the header image: it belongs to the serialisations of its own packet.
void IPv4Packet::D::copyFrom(const D& other)
{
    *this = other;
    header.fill('\0');
}

// False if the packet has no header at all.
bool IPv4Packet::D::writeHeader()
{
    header.fill('\0');
    qToBigEndian(source.toUInt32(), &header[sourceAt]);
    qToBigEndian(destination.toUInt32(), &header[destinationAt]);
    if (child == nullptr && protocol == TransportPacket::noProtocol)
        return false;
    const quint32 payloadLength = child != nullptr ? child->length() : quint32(data.size());
    header[versionAt] = versionAndHeaderSize;
    qToBigEndian(quint16(headerSizeBytes + payloadLength), &header[totalLengthAt]);
    qToBigEndian(dontFragment, &header[fragmentAt]);
    header[timeToLiveAt] = char(timeToLive);
    header[protocolAt] = char(child != nullptr ? child->protocol() : protocol);
    qToBigEndian(quint16(~foldedSum(sumOfWords(header.data(), header.size()))), &header[checksumAt]);
    return true;
}

IPv4Packet::IPv4Packet(const IpAddress& source, const IpAddress& destination, TransportPacket* child)
{
    d->child = child;
    d->source = source;
    d->destination = destination;
}

IPv4Packet::IPv4Packet(const IpAddress& source, const IpAddress& destination, quint8 protocol,
                       const QByteArray& data)
{
    d->protocol = protocol;
    d->totalLength = quint16(data.size() + headerSizeBytes);
    d->data = ByteSlice(data);
    d->source = source;
    d->destination = destination;
}

IPv4Packet::IPv4Packet(const QByteArray& bytes)
    : IPv4Packet(ByteSlice(bytes))
{
}

IPv4Packet::IPv4Packet(ByteSlice&& bytes)
{
    d->parse(std::move(bytes));
}

IPv4Packet::IPv4Packet(const IPv4Packet& other)
    : InternetPacket(other)
{
    d->copyFrom(*other.d);
}

IPv4Packet::IPv4Packet(const InternetPacket& other)
{
    if (const auto* same = dynamic_cast<const IPv4Packet*>(&other))
        d->copyFrom(*same->d);
}

IPv4Packet::~IPv4Packet() = default;

quint32 IPv4Packet::headerSize() const
{
    return d->headerSize;
}

quint32 IPv4Packet::payloadSize() const
{
    const D& r = *d;
    return r.child != nullptr ? r.child->totalSize() : quint32(r.data.size());
}

quint32 IPv4Packet::totalSize() const
{
    const D& r = *d;
    return r.child != nullptr ? r.headerSize + r.child->totalSize() : r.totalLength;
}

QByteArray IPv4Packet::serialize() const
{
    return serializeIn({});
}

QByteArray IPv4Packet::serializeIn(const FrameRoom& room) const
{
    if (!d->writeHeader())
        return room.arrayOf(d->data);
    const D& r = *d;
    const FrameRoom payloadRoom = room.behind(headerSizeBytes);
    QByteArray packet = r.child != nullptr
                            ? TransportPacket::serializeIn(payloadRoom, *r.child, r.source, r.destination)
                            : payloadRoom.arrayOf(r.data);
    std::memcpy(packet.data() + room.before, r.header.data(), r.header.size());
    return packet;
}

quint16 IPv4Packet::etherType() const
{
    return EtherType;
}

quint8 IPv4Packet::protocol() const
{
    const D& r = *d;
    return r.child != nullptr ? r.child->protocol() : r.protocol;
}

QByteArray IPv4Packet::payload() const
{
    const D& r = *d;
    return r.child != nullptr ? r.child->serialize(r.source, r.destination) : r.data.array();
}

const IpAddress& IPv4Packet::sourceAddress() const
{
    return d->source;
}

const IpAddress& IPv4Packet::destinationAddress() const
{
    return d->destination;
}

quint16 IPv4Packet::lengthField() const
{
    return readMemory<quint16>(&d->header[totalLengthAt], int(sizeof(quint16)));
}

TransportPacket* IPv4Packet::transportPacket() const
{
    return TransportPacket::create(protocol(), d->payload());
}

IPv4Packet* IPv4Packet::clone() const
{
    return new IPv4Packet(serialize());
}
