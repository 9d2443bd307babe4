#include "packets/TransportPacket.h"

#include "packets/ByteSlice.h"
#include "packets/CopyAs.h"
#include "packets/FrameRoom.h"
#include "packets/IcmpPacket.h"
#include "packets/UdpPacket.h"

#include <typeinfo>

quint32 TransportPacket::layer() const
{
    return 4;
}

TransportPacket* TransportPacket::create(const quint8& protocol, const QByteArray& bytes)
{
    return create(protocol, ByteSlice(bytes));
}

TransportPacket* TransportPacket::create(const quint8& protocol, ByteSlice&& bytes)
{
    switch (protocol) {
    case IcmpPacket::Protocol:
        return new IcmpPacket(std::move(bytes));
    case UdpPacket::Protocol:
        return new UdpPacket(std::move(bytes));
    default:
        return nullptr;
    }
}

TransportPacket* TransportPacket::copyOf(const TransportPacket& packet)
{
    switch (packet.protocol()) {
    case IcmpPacket::Protocol:
        return copyAs<IcmpPacket>(packet);
    case UdpPacket::Protocol:
        return copyAs<UdpPacket>(packet);
    default:
        return nullptr;
    }
}

QByteArray TransportPacket::serializeIn(const FrameRoom& room, const TransportPacket& packet,
                                        const IpAddress& source, const IpAddress& destination)
{
    // Of this class exactly: a class derived from it may serialise in another way. By address, since equal
    // names would also be those of another binary with this library in it, whose records may be others.
    if (&typeid(packet) == &typeid(UdpPacket))
        return static_cast<const UdpPacket&>(packet).serializeIn(room, source, destination);
    return room.arrayOf(packet.serialize(source, destination));
}
