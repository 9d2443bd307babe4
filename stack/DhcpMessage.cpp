#include "stack/DhcpMessage.h"

#include "packets/ByteArrayHelpers.h"
#include "packets/DhcpPacket.h"

namespace mesk::stack::dhcp {

Type typeOf(const DhcpPacket& packet)
{
    const QByteArray value = packet.option(typeOption);
    return value.size() == 1 ? Type(quint8(value[0])) : Type::None;
}

void setType(DhcpPacket& packet, Type type)
{
    packet.setOption(typeOption, byteArrayFromUInt8(quint8(type)));
}

std::optional<quint32> numberOption(const DhcpPacket& packet, quint8 code)
{
    const QByteArray value = packet.option(code);
    if (value.size() < int(sizeof(quint32)))
        return {};
    return readField<quint32>(value, 0);
}

IpAddress addressOption(const DhcpPacket& packet, quint8 code)
{
    return IpAddress(numberOption(packet, code).value_or(0));
}

void setAddressOption(DhcpPacket& packet, quint8 code, const IpAddress& address)
{
    packet.setOption(code, byteArrayFromUInt32(qToBigEndian(address.toUInt32())));
}

MacAddress clientOf(const DhcpPacket& packet)
{
    return readMacAddress(packet.chaddr(), 0);
}

} // namespace mesk::stack::dhcp
