#include "host/tour/LeasePool.h"

#include <algorithm>

namespace mesk::host {

std::optional<stack::DhcpServer::Pool> leasePoolOf(const stack::NetAddress& own)
{
    constexpr quint32 sizeMax = 32;
    const quint32 address = own.address.toUInt32();
    const quint32 end = (address & own.mask().toUInt32()) | ~own.mask().toUInt32(); // the broadcast address
    if (end - address < 2) {
        return std::nullopt;
    }
    const quint32 first = std::max(address + 1, end - std::min(sizeMax, end));
    return stack::DhcpServer::Pool{IpAddress(first), IpAddress(end - 1)};
}

} // namespace mesk::host
