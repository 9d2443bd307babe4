#include "packets/InternetPacket.h"

#include "packets/ArpPacket.h"
#include "packets/ByteSlice.h"
#include "packets/CopyAs.h"
#include "packets/FrameRoom.h"
#include "packets/IPv4Packet.h"

#include <typeinfo>

quint32 InternetPacket::layer() const
{
    return 3;
}

quint16 InternetPacket::lengthField() const
{
    return 0;
}

InternetPacket* InternetPacket::create(const quint16& etherType, const QByteArray& bytes)
{
    return create(etherType, ByteSlice(bytes));
}

InternetPacket* InternetPacket::create(const quint16& etherType, ByteSlice&& bytes)
{
    switch (etherType) {
    case IPv4Packet::EtherType:
        return new IPv4Packet(std::move(bytes));
    case ArpPacket::EtherType:
        return new ArpPacket(bytes);
    default:
        return nullptr;
    }
}

InternetPacket* InternetPacket::copyOf(const InternetPacket& packet)
{
    switch (packet.etherType()) {
    case IPv4Packet::EtherType:
        return copyAs<IPv4Packet>(packet);
    case ArpPacket::EtherType:
        return copyAs<ArpPacket>(packet);
    default:
        return nullptr;
    }
}

QByteArray InternetPacket::serializeIn(const FrameRoom& room, const InternetPacket& packet)
{
    // Of this class exactly: a class derived from it may serialise in another way. By address, since equal
    // names would also be those of another binary with this library in it, whose records may be others.
    if (&typeid(packet) == &typeid(IPv4Packet))
        return static_cast<const IPv4Packet&>(packet).serializeIn(room);
    return room.arrayOf(packet.serialize());
}
