#include "stand-ins/camera/AddressConfiguration.h"

#include <algorithm>
#include <utility>

namespace emulated_camera {

using mesk::stack::DhcpClient;
using mesk::stack::NetAddress;
using mesk::stack::TimePoint;

namespace {

// RFC 3927: 169.254/16 without its first and its last 256 addresses.
constexpr quint32 linkLocalFirst = 0xa9fe0100, linkLocalCount = 254 * 256;
constexpr unsigned linkLocalPrefixBits = 16;

quint32 seedOf(const MacAddress& mac)
{
    const quint64 number = mac.toUInt64();
    return quint32(number ^ number >> 24);
}

} // namespace

AddressConfiguration::AddressConfiguration(mesk::stack::NetworkNode& node, Changed changed)
    : m_node(node)
    , m_changed(std::move(changed))
    , m_dhcp(node, DhcpClient::Timing(), dhcpEvents(), seedOf(node.mac()))
    , m_random(seedOf(node.mac()))
{
    m_node.onConflict(
        [this](const MacAddress&, bool isDefended, TimePoint now) { meetConflict(isDefended, now); });
}

void AddressConfiguration::start(const Choices& choices, TimePoint now)
{
    m_choices = choices;
    m_random = seedOf(m_node.mac()); // the same addresses in each run, RFC 3927, 2.1
    m_linkLocalConflicts = 0;
    m_forced = {};
    drop();
    m_changed(now);
    tryFrom(Method::Persistent, now);
}

void AddressConfiguration::force(const NetAddress& address, const IpAddress& gateway, const Forced& forced,
                                 TimePoint now)
{
    m_forced = forced;
    m_retryAt = mesk::stack::never; // the end of this probe begins anew, if need be
    probe(
        address,
        [=](bool inUse, TimePoint then) {
            m_forced = {};
            if (!inUse)
                take(Method::Forced, address, gateway, then);
            else if (m_method == Method::None && m_dhcp.state() == DhcpClient::State::Stopped)
                tryFrom(Method::Persistent, then); // the probe of this one was broken off
            forced(!inUse, then);
        },
        now);
}

bool AddressConfiguration::isForcing() const
{
    return static_cast<bool>(m_forced);
}

AddressConfiguration::Method AddressConfiguration::method() const
{
    return m_method;
}

const IpAddress& AddressConfiguration::gateway() const
{
    return m_gateway;
}

quint64 AddressConfiguration::conflicts() const
{
    return m_conflicts;
}

void AddressConfiguration::expire(TimePoint now)
{
    if (m_announceAt <= now) {
        m_announceAt = mesk::stack::never;
        m_node.announce();
    }
    if (m_retryAt <= now) {
        m_retryAt = mesk::stack::never;
        tryLinkLocal(now);
    }
    if (!isForcing() && isOutOfServers(now)) {
        m_dhcp.stop();
        tryFrom(Method::LinkLocal, now);
    }
    m_dhcp.expire(now);
}

TimePoint AddressConfiguration::nextDeadline() const
{
    return std::min({m_announceAt, m_retryAt, m_dhcp.nextDeadline()});
}

void AddressConfiguration::drop()
{
    m_dhcp.stop();
    m_node.cancelProbes(this);
    m_node.setAddress({});
    m_method = Method::None;
    m_gateway.clear();
    m_announceAt = mesk::stack::never;
    m_retryAt = mesk::stack::never;
}

void AddressConfiguration::tryFrom(Method method, TimePoint now)
{
    if (method == Method::Persistent && m_choices.persistent.isThere()) {
        tryPersistent(now);
    } else if (method != Method::LinkLocal && m_choices.dhcp) {
        m_discoversBefore = 0;
        m_dhcp.start(now);
    } else {
        tryLinkLocal(now);
    }
}

void AddressConfiguration::tryPersistent(TimePoint now)
{
    probe(
        m_choices.persistent,
        [this](bool inUse, TimePoint then) {
            if (inUse)
                tryFrom(Method::Dhcp, then);
            else
                take(Method::Persistent, m_choices.persistent, m_choices.persistentGateway, then);
        },
        now);
}

void AddressConfiguration::tryLinkLocal(TimePoint now)
{
    const NetAddress address{nextLinkLocal(), linkLocalPrefixBits};
    probe(
        address,
        [this, address](bool inUse, TimePoint then) {
            if (!inUse)
                take(Method::LinkLocal, address, {}, then);
            else if (++m_linkLocalConflicts < conflictsMax)
                tryLinkLocal(then);
            else
                m_retryAt = then + conflictPause;
        },
        now);
}

// Where the next thing to do would be one more discover.
bool AddressConfiguration::isOutOfServers(TimePoint now) const
{
    return m_dhcp.state() == DhcpClient::State::Selecting && m_dhcp.nextDeadline() <= now &&
           m_dhcp.discoversSent() >= m_discoversBefore + discoversMax;
}

DhcpClient::Events AddressConfiguration::dhcpEvents()
{
    DhcpClient::Events events;
    events.bound = [this](const mesk::stack::DhcpLease& lease, TimePoint now) {
        m_method = Method::Dhcp;
        m_gateway = lease.router;
        m_changed(now);
    };
    events.lost = [this](TimePoint now) {
        m_method = Method::None;
        m_gateway.clear();
        m_discoversBefore = m_dhcp.discoversSent();
        m_changed(now);
    };
    // Whose address is declined is there: as many discovers again.
    events.declined = [this](const IpAddress&, TimePoint) {
        ++m_conflicts;
        m_discoversBefore = m_dhcp.discoversSent();
    };
    return events;
}

void AddressConfiguration::probe(const NetAddress& address, const Probed& probed, TimePoint now)
{
    m_node.cancelProbes(this);
    m_node.probe(
        address.address, probes, probeInterval,
        [this, probed](const std::optional<MacAddress>& owner, TimePoint then) {
            if (owner)
                ++m_conflicts;
            probed(owner.has_value(), then);
        },
        now, this);
}

void AddressConfiguration::take(Method method, const NetAddress& address, const IpAddress& gateway,
                                TimePoint now)
{
    drop();
    m_node.setAddress(address);
    m_method = method;
    m_gateway = gateway;
    m_node.announce();
    m_announceAt = now + announceInterval;
    m_changed(now);
}

// The first time the node's own defence has to do (RFC 5227, 2.4 b).
void AddressConfiguration::meetConflict(bool isDefended, TimePoint now)
{
    if (!isDefended && m_method == Method::Dhcp) {
        m_dhcp.decline(now); // by whose events all else is done
        return;
    }
    ++m_conflicts;
    if (isDefended)
        return;
    if (const Forced brokenOff = std::exchange(m_forced, {}))
        brokenOff(false, now);
    const Method left = m_method;
    drop();
    m_changed(now);
    if (left == Method::LinkLocal && ++m_linkLocalConflicts >= conflictsMax)
        m_retryAt = now + conflictPause;
    else
        tryFrom(left == Method::Forced ? Method::Persistent
                                       : (left == Method::Persistent ? Method::Dhcp : Method::LinkLocal),
                now);
}

IpAddress AddressConfiguration::nextLinkLocal()
{
    constexpr quint32 factor = 1664525, summand = 1013904223; // a linear congruential generator's usual ones
    m_random = m_random * factor + summand;
    return IpAddress(linkLocalFirst + (m_random >> 8) % linkLocalCount);
}

} // namespace emulated_camera
