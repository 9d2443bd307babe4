#pragma once

#include "packets/IpAddress.h"
#include "packets/MacAddress.h"
#include "stack/DhcpServer.h"
#include "stack/Time.h"

#include <map>
#include <optional>
#include <vector>

namespace mesk::stack {

/// The leases of a DhcpServer: at most one for each address of the pool, and for each client, but for those
/// that it declined. [one thread at a time]
class LeaseTable {
public:
    using Lease = DhcpServer::Lease;
    using State = DhcpServer::LeaseState;

    explicit LeaseTable(const DhcpServer::Pool& pool);

    bool isOfPool(const IpAddress& address) const;
    /// The client's lease that isn't declined; nothing if it has none.
    std::optional<Lease> ofClient(const MacAddress& client) const;
    /// Whether the client could have the address now.
    /// @param own the server's; of its net neither this address nor the first and the last one is ever
    /// leased.
    bool isOpenTo(const MacAddress& client, const IpAddress& address, const NetAddress& own) const;
    /// An address that nobody had, else the one that is free for longest; 0.0.0.0 if all are in use.
    IpAddress findFree(const NetAddress& own) const;

    /// Puts a lease in the place of those of the client and of the address.
    /// @param lease its address is of the pool.
    void put(const Lease& lease);
    /// Takes the lease of the address out of use. It is kept for the client, unless that declined it.
    /// @returns the lease as it is now.
    Lease takeBack(const IpAddress& address);
    std::vector<IpAddress> expired(TimePoint now) const;
    TimePoint nextExpiry() const;
    /// In the order of the addresses.
    std::vector<Lease> all() const;

private:
    struct Entry {
        Lease lease;
        quint64 freed = 0; // which release it was, for a released one
    };
    using Entries = std::map<quint32, Entry>;

    Entries::const_iterator find(const MacAddress& client) const;

    quint32 m_first;
    quint32 m_count;
    Entries m_entries;
    quint64 m_releases = 0;
};

} // namespace mesk::stack
