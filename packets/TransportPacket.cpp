#include "packets/TransportPacket.h"

#include "packets/ByteSlice.h"
#include "packets/CopyAs.h"
#include "packets/IcmpPacket.h"
#include "packets/UdpPacket.h"

quint32 TransportPacket::layer() const
{
    return 4;
}

TransportPacket* TransportPacket::create(const quint8& protocol, const QByteArray& bytes)
{
    return create(protocol, ByteSlice(bytes));
}

TransportPacket* TransportPacket::create(const quint8& protocol, const ByteSlice& bytes)
{
    switch (protocol) {
    case IcmpPacket::Protocol:
        return new IcmpPacket(bytes);
    case UdpPacket::Protocol:
        return new UdpPacket(bytes);
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
