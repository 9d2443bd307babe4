#pragma once

#include "packets/IpAddress.h"
#include "stack/NetworkNode.h"
#include "stack/Time.h"

#include <QtGlobal>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace mesk::stack {

/// What a server granted.
struct DhcpLease {
    NetAddress address; ///< without a mask from the server with that of the address' class (RFC 950)
    IpAddress router;   ///< 0.0.0.0 for none
    IpAddress server;
    std::chrono::seconds time{0}; ///< 0xffffffff for a lease without an end
    TimePoint expires = never;
};

/// DHCP client (RFC 2131) on a node: lease, renewal, rebinding, refusal, release, and decline of an address
/// that somebody uses. It sets and clears the node's address. Until then the node may have another address,
/// of a fallback: the client asks for answers by broadcast then, since the node takes none to the offered
/// address.
///
/// The node must outlive the client. Port 68 of the node is the client's between start() and stop(). Events
/// are called within the calls below or within the node's receive() and expire(); they may call the client,
/// but must not destroy it. Never throws. [one thread at a time]
class DhcpClient {
public:
    enum class State { Stopped, Selecting, Requesting, Probing, Bound, Renewing, Rebinding };

    /// A message without an answer is sent again; the waits double, and each is made up to a quarter longer
    /// or shorter, so that clients that began together don't stay together.
    struct Timing {
        Duration firstRetry = std::chrono::seconds(1);
        Duration retryMax = std::chrono::seconds(16);
        Duration renewRetryMax = std::chrono::seconds(60); ///< while there is a lease
        unsigned requests = 4;                             ///< for one offer
        unsigned probes = 3;                               ///< of an address before it is used; may be 0
        Duration probeInterval = std::chrono::milliseconds(100);
        Duration declineWait = std::chrono::seconds(10); ///< before the next discover (RFC 2131, 3.1)
        Duration secondAnnouncement =
            std::chrono::seconds(2); ///< after the first (RFC 5227, ANNOUNCE_INTERVAL)
    };

    /// Any may be empty.
    struct Events {
        std::function<void(const DhcpLease&, TimePoint)> bound; ///< also after a renewal
        /// The lease expired or was refused; the address is gone, and the client starts again.
        std::function<void(TimePoint)> lost;
        /// Somebody uses the address; before lost if there was a lease.
        std::function<void(const IpAddress&, TimePoint)> declined;
        std::function<void(TimePoint)> refused; ///< by the server, before lost if there was a lease
    };

    /// @param seed of the message ids and of the waits: clients of one net need different ones.
    DhcpClient(NetworkNode& node, const Timing& timing, Events events, quint32 seed);
    DhcpClient(const DhcpClient&) = delete;
    DhcpClient& operator=(const DhcpClient&) = delete;
    /// As stop().
    ~DhcpClient();

    /// Starts, or starts anew.
    void start(TimePoint now);
    /// Now instead of at half of the time. Without a lease, or with a renewal under way, nothing.
    void renew(TimePoint now);
    /// Leaves the address of the lease, if there is one, to who uses it as well: tells the server, and asks
    /// for another one later (RFC 2131, 3.1).
    void decline(TimePoint now);
    /// Gives the lease back, if there is one, and stops.
    void release(TimePoint now);
    /// Stops without a message. A lease is forgotten, and its address cleared: nobody renews it.
    void stop();
    /// Does what is due. To be called at nextDeadline() or later.
    void expire(TimePoint now);
    TimePoint nextDeadline() const;

    State state() const;
    const std::optional<DhcpLease>& lease() const;
    /// Since start(), for who gives up one day.
    unsigned discoversSent() const;

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::stack
