#pragma once

#include "packets/IpAddress.h"
#include "packets/MacAddress.h"
#include "stack/NetworkNode.h"
#include "stack/Time.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace mesk::stack {

/// DHCP server (RFC 2131) on a node whose address is set: leases out of one pool. While the node has no
/// address nothing is answered. Clients are told apart by their hardware addresses. A client gets the address
/// again that it had; else the one it asks for, if that is free; else one that nobody had; else the one that
/// is free for longest.
///
/// A client that asks to go on with an address of the pool that nobody has gets it, known or not: the pool is
/// this server's alone. One that has another address, or asks for one of another net, is refused. DHCPINFORM
/// is not answered, nor is what a relay sends on from another net.
///
/// Never leased: the node's own address, and network and broadcast address of its net.
///
/// The node must outlive the server. Port 67 of the node is the server's while it lives. Events are called
/// within the node's receive() and expire(); they must not destroy the server. Never throws. [one thread at a
/// time]
class DhcpServer {
public:
    /// Both ends included; of a net's addresses in the order of their numbers.
    struct Pool {
        IpAddress first;
        IpAddress last;
    };
    enum class LeaseState {
        Offered,
        Bound,
        Declined, ///< by the client: somebody else uses the address
        Released, ///< or expired; kept for the client until somebody else needs it
    };
    struct Lease {
        MacAddress client;
        IpAddress address;
        LeaseState state = LeaseState::Offered;
        TimePoint expires = never; ///< never for Released
    };
    /// Any may be empty.
    struct Events {
        /// Offered, bound, renewed, declined, released, or expired, which counts as released.
        std::function<void(const Lease&, TimePoint)> changed;
        /// A request was refused.
        std::function<void(const MacAddress&, const IpAddress& asked, TimePoint)> refused;
    };

    static constexpr std::size_t leasesMax = 1024;          ///< a longer pool is used up to here
    static constexpr std::chrono::seconds offerTime{30};    ///< for which an offered address is held
    static constexpr std::chrono::seconds declineTime{600}; ///< for which a declined address is out of use

    /// Gives options 1 (mask), 51 (lease time) and 54 (server), and 61 (client identifier) back to who sent
    /// it (RFC 6842); nothing else.
    /// @param leaseTime 0xffffffff and more for leases without an end.
    DhcpServer(NetworkNode& node, const Pool& pool, std::chrono::seconds leaseTime, Events events);
    DhcpServer(const DhcpServer&) = delete;
    DhcpServer& operator=(const DhcpServer&) = delete;
    ~DhcpServer();

    /// Does what is due. To be called at nextDeadline() or later.
    void expire(TimePoint now);
    TimePoint nextDeadline() const;

    /// In the order of the addresses.
    std::vector<Lease> leases() const;
    /// Whether every address of the pool is in use, as of the last expire().
    bool isExhausted() const;
    /// How many discovers found no free address; they are not answered.
    quint64 discoversUnanswered() const;

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::stack
