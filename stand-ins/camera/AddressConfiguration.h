#pragma once

#include "stack/DhcpClient.h"
#include "stack/NetworkNode.h"

#include <functional>

namespace emulated_camera {

/// How the device gets its address: by force, the persistent one, from a DHCP server, or a link-local one
/// (RFC 3927), in this order as far as they are enabled. Every address is probed first (RFC 5227), and
/// announced twice once it is taken. One that somebody uses is left for the next choice; the server is asked
/// for another one. A device that has fallen back to a link-local address keeps it until it is started again.
/// [one thread at a time]
class AddressConfiguration {
public:
    enum class Method { None, Forced, Persistent, Dhcp, LinkLocal };
    struct Choices {
        bool dhcp = false;
        mesk::stack::NetAddress persistent; ///< not there: not enabled
        IpAddress persistentGateway;
    };
    using Changed = std::function<void(mesk::stack::TimePoint now)>;
    /// @param taken false: somebody uses the address, and everything is as before; or the own address had to
    /// be left meanwhile.
    using Forced = std::function<void(bool taken, mesk::stack::TimePoint now)>;

    static constexpr unsigned probes = 3;
    static constexpr mesk::stack::Duration probeInterval = std::chrono::milliseconds(100);
    static constexpr mesk::stack::Duration announceInterval = std::chrono::seconds(2);
    static constexpr unsigned discoversMax = 3; ///< unanswered ones, then there is no server
    /// Link-local addresses that were in use, one after the other, before the device waits between two tries.
    static constexpr unsigned conflictsMax = 10;
    static constexpr mesk::stack::Duration conflictPause = std::chrono::seconds(60);

    /// @param changed is called whenever method(), gateway() or the node's address did change.
    AddressConfiguration(mesk::stack::NetworkNode& node, Changed changed);

    /// Drops what there is, and begins with the first choice. Who forces an address is told nothing.
    void start(const Choices& choices, mesk::stack::TimePoint now);
    /// Takes an address at somebody's command, unless it is in use. Not while isForcing().
    void force(const mesk::stack::NetAddress& address, const IpAddress& gateway, const Forced& forced,
               mesk::stack::TimePoint now);
    /// Whether a forced address is still probed.
    bool isForcing() const;

    Method method() const;
    const IpAddress& gateway() const;
    /// Own addresses that somebody else used, before or after they were taken.
    quint64 conflicts() const;

    void expire(mesk::stack::TimePoint now);
    mesk::stack::TimePoint nextDeadline() const;

private:
    using Probed = std::function<void(bool inUse, mesk::stack::TimePoint now)>;

    void drop();
    void tryFrom(Method method, mesk::stack::TimePoint now);
    void tryLinkLocal(mesk::stack::TimePoint now);
    void tryPersistent(mesk::stack::TimePoint now);
    bool isOutOfServers(mesk::stack::TimePoint now) const;
    mesk::stack::DhcpClient::Events dhcpEvents();
    void probe(const mesk::stack::NetAddress& address, const Probed& probed, mesk::stack::TimePoint now);
    void take(Method method, const mesk::stack::NetAddress& address, const IpAddress& gateway,
              mesk::stack::TimePoint now);
    void meetConflict(bool isDefended, mesk::stack::TimePoint now);
    IpAddress nextLinkLocal();

    mesk::stack::NetworkNode& m_node;
    Changed m_changed;
    mesk::stack::DhcpClient m_dhcp;
    Choices m_choices;
    Method m_method = Method::None;
    IpAddress m_gateway;
    quint32 m_random; ///< of the link-local addresses
    quint64 m_conflicts = 0;
    unsigned m_linkLocalConflicts = 0;
    unsigned m_discoversBefore = 0; ///< sent before the client began to look for a server
    Forced m_forced;                ///< of the probe under way; empty: of another one, or none
    mesk::stack::TimePoint m_announceAt = mesk::stack::never;
    mesk::stack::TimePoint m_retryAt = mesk::stack::never;
};

} // namespace emulated_camera
