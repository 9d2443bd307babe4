#include "stack/LeaseTable.h"

#include <algorithm>
#include <limits>

namespace mesk::stack {

namespace {

quint32 countOf(const DhcpServer::Pool& pool)
{
    const quint32 first = pool.first.toUInt32(), last = pool.last.toUInt32();
    return last < first ? 0 : quint32(std::min<quint64>(quint64(last) - first + 1, DhcpServer::leasesMax));
}

bool isLeasable(const IpAddress& address, const NetAddress& own)
{
    if (address == own.address || address == IpAddress() || address.isBroadcast())
        return false;
    const IpAddress net(own.address.toUInt32() & own.mask().toUInt32());
    const bool hasEnds = !own.broadcast().isBroadcast(); // not in a net of one or two addresses
    return !hasEnds || (address != net && address != own.broadcast());
}

} // namespace

LeaseTable::LeaseTable(const DhcpServer::Pool& pool)
    : m_first(pool.first.toUInt32())
    , m_count(countOf(pool))
{
}

bool LeaseTable::isOfPool(const IpAddress& address) const
{
    return address.toUInt32() >= m_first && address.toUInt32() - m_first < m_count;
}

std::optional<LeaseTable::Lease> LeaseTable::ofClient(const MacAddress& client) const
{
    const auto found = find(client);
    return found != m_entries.end() ? std::optional(found->second.lease) : std::nullopt;
}

LeaseTable::Entries::const_iterator LeaseTable::find(const MacAddress& client) const
{
    return std::find_if(m_entries.begin(), m_entries.end(), [&client](const auto& each) {
        const Lease& lease = each.second.lease;
        return lease.client == client && lease.state != State::Declined;
    });
}

bool LeaseTable::isOpenTo(const MacAddress& client, const IpAddress& address, const NetAddress& own) const
{
    if (!isOfPool(address) || !isLeasable(address, own))
        return false;
    const auto found = m_entries.find(address.toUInt32());
    if (found == m_entries.end() || found->second.lease.state == State::Released)
        return true;
    return found->second.lease.client == client && found->second.lease.state != State::Declined;
}

IpAddress LeaseTable::findFree(const NetAddress& own) const
{
    IpAddress longestFree;
    quint64 freed = std::numeric_limits<quint64>::max();
    for (quint32 i = 0; i < m_count; ++i) {
        const IpAddress address(m_first + i);
        if (!isLeasable(address, own))
            continue;
        const auto found = m_entries.find(address.toUInt32());
        if (found == m_entries.end())
            return address;
        if (found->second.lease.state == State::Released && found->second.freed < freed) {
            freed = found->second.freed;
            longestFree = address;
        }
    }
    return longestFree;
}

void LeaseTable::put(const Lease& lease)
{
    const auto former = find(lease.client);
    if (former != m_entries.end())
        m_entries.erase(former);
    m_entries[lease.address.toUInt32()] = {lease, 0};
}

LeaseTable::Lease LeaseTable::takeBack(const IpAddress& address)
{
    const auto found = m_entries.find(address.toUInt32());
    if (found == m_entries.end())
        return {};
    Entry& entry = found->second;
    const bool isKept = entry.lease.state != State::Declined;
    entry.lease.state = State::Released;
    entry.lease.expires = never;
    entry.freed = ++m_releases;
    const Lease freed = entry.lease;
    if (!isKept)
        m_entries.erase(found);
    return freed;
}

std::vector<IpAddress> LeaseTable::expired(TimePoint now) const
{
    std::vector<IpAddress> addresses;
    for (const auto& [address, entry] : m_entries)
        if (entry.lease.expires <= now)
            addresses.emplace_back(address);
    return addresses;
}

TimePoint LeaseTable::nextExpiry() const
{
    TimePoint next = never;
    for (const auto& each : m_entries)
        next = std::min(next, each.second.lease.expires);
    return next;
}

std::vector<LeaseTable::Lease> LeaseTable::all() const
{
    std::vector<Lease> leases;
    leases.reserve(m_entries.size());
    for (const auto& each : m_entries)
        leases.push_back(each.second.lease);
    return leases;
}

} // namespace mesk::stack
