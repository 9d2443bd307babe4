#pragma once

#include "packets/IpAddress.h"
#include "packets/MacAddress.h"

#include <optional>

class DhcpPacket;

/// What client and server read and write in a DhcpPacket (RFC 2131, 2132).
namespace mesk::stack::dhcp {

/// Value of option 53.
enum class Type : quint8 {
    None = 0, ///< no such option
    Discover = 1,
    Offer = 2,
    Request = 3,
    Decline = 4,
    Acknowledge = 5,
    Refuse = 6,
    Release = 7,
};

constexpr quint8 maskOption = 1, routerOption = 3, askedAddressOption = 50, leaseTimeOption = 51,
                 typeOption = 53, serverOption = 54, renewalTimeOption = 58, rebindingTimeOption = 59,
                 clientIdOption = 61;
constexpr quint16 broadcastFlag = 0x8000;
/// Lease time of a lease that never ends.
constexpr quint32 infiniteSeconds = 0xffffffffU;

Type typeOf(const DhcpPacket& packet);
void setType(DhcpPacket& packet, Type type);

/// The first number of four bytes in an option's value, in host byte order; nothing if there is none.
std::optional<quint32> numberOption(const DhcpPacket& packet, quint8 code);
/// The same as an address; 0.0.0.0 if there is none.
IpAddress addressOption(const DhcpPacket& packet, quint8 code);
void setAddressOption(DhcpPacket& packet, quint8 code, const IpAddress& address);

/// The client's hardware address.
MacAddress clientOf(const DhcpPacket& packet);

} // namespace mesk::stack::dhcp
