#include "stack/DhcpClient.h"

#include "packets/DhcpPacket.h"
#include "stack/DhcpMessage.h"

#include <algorithm>
#include <random>
#include <utility>

namespace mesk::stack {

namespace {

using dhcp::Type;
using std::chrono::seconds;

// Of a server that doesn't tell, though it must.
constexpr quint32 defaultLeaseSeconds = DhcpPacket::defaultLeaseTimeSeconds;

unsigned prefixOfClass(const IpAddress& address)
{
    const quint32 firstByte = address.toUInt32() >> 24;
    return firstByte < 128 ? 8 : firstByte < 192 ? 16 : 24;
}

// Ones behind the first zero don't count.
unsigned prefixOfMask(quint32 mask)
{
    unsigned bits = 0;
    for (; (mask & 0x80000000U) != 0; mask <<= 1)
        ++bits;
    return bits;
}

TimePoint secondsAfter(TimePoint from, quint32 wait)
{
    return wait == dhcp::infiniteSeconds ? never : after(from, seconds(wait));
}

// A server's message to a client, and whom it came from.
struct Answer {
    Type type;
    IpAddress server;
    MacAddress serverMac; // or the relay's
    DhcpPacket packet;

    explicit Answer(const Datagram& datagram)
        : type(Type::None)
        , serverMac(datagram.senderMac)
        , packet(datagram.data)
    {
        type = dhcp::typeOf(packet);
        server = dhcp::addressOption(packet, dhcp::serverOption);
    }
    bool isFor(const MacAddress& client, quint32 xid) const
    {
        return packet.isValid() && !packet.isRequest() && packet.xid() == xid &&
               dhcp::clientOf(packet) == client && server != IpAddress();
    }
    quint32 leaseSeconds() const
    {
        return dhcp::numberOption(packet, dhcp::leaseTimeOption).value_or(defaultLeaseSeconds);
    }
    // Whether the offered or granted address can be used for any time at all.
    bool isUsable() const
    {
        const quint32 first = packet.yiaddr().toUInt32() >> 24;
        return first != 0 && first != 127 && first < 224 && leaseSeconds() != 0;
    }
};

// When a lease has to be prolonged. Of the shortest leases half of the time is less than a second.
struct Times {
    TimePoint renewal = never;
    TimePoint rebinding = never;

    Times(const DhcpPacket& granted, TimePoint from, quint32 leaseSeconds)
    {
        if (leaseSeconds == dhcp::infiniteSeconds)
            return;
        const Duration whole = seconds(leaseSeconds), half = whole / 2, sevenEighths = whole - whole / 8;
        Duration first = told(granted, dhcp::renewalTimeOption).value_or(half);
        Duration second = told(granted, dhcp::rebindingTimeOption).value_or(sevenEighths);
        if (first == Duration::zero() || first > second || second > whole) {
            first = half;
            second = sevenEighths;
        }
        renewal = after(from, first);
        rebinding = after(from, second);
    }

private:
    static std::optional<Duration> told(const DhcpPacket& granted, quint8 code)
    {
        const auto number = dhcp::numberOption(granted, code);
        return number ? std::optional<Duration>(seconds(*number)) : std::nullopt;
    }
};

} // namespace

struct DhcpClient::D {
    NetworkNode& node;
    const Timing timing;
    const Events events;
    std::mt19937 random;

    State state = State::Stopped;
    quint32 xid = 0;
    unsigned discovers = 0;
    unsigned requestsLeft = 0;
    Duration retry{};
    TimePoint due = never;          // of what the state does next
    TimePoint announcement = never; // the second one
    TimePoint asked = never;        // when the last request went out
    std::unique_ptr<Answer> taken;  // the offer, then the acknowledge
    std::optional<DhcpLease> lease;
    TimePoint rebinding = never;

    D(NetworkNode& on, const Timing& times, Events calls, quint32 seed)
        : node(on)
        , timing(times)
        , events(std::move(calls))
        , random(seed)
    {
    }

    void select(TimePoint from);
    void dropLease();
    void lose(TimePoint now);
    void beginRenewal(TimePoint now);
    TimePoint nextRetry(TimePoint now, Duration waitMax);

    void sendByBroadcast(DhcpPacket& packet);
    void sendDiscover(TimePoint now);
    void sendRequest(TimePoint now);
    void sendRenewal(TimePoint now);
    void sendRelease();

    void receive(const Datagram& datagram, TimePoint now);
    void receiveOffer(std::unique_ptr<Answer> offer, TimePoint now);
    void receiveAcknowledge(std::unique_ptr<Answer> acknowledge, TimePoint now);
    void receiveRefusal(TimePoint now);
    bool isFromOurServer(const Answer& answer) const;
    void decline(TimePoint now);
    void probed(const std::optional<MacAddress>& user, TimePoint now);
    void bindLease(TimePoint now);
    void act(TimePoint now);
};

// Without a lease, discovers from the time on.
void DhcpClient::D::select(TimePoint from)
{
    state = State::Selecting;
    taken.reset();
    xid = quint32(random());
    retry = timing.firstRetry;
    due = from;
}

void DhcpClient::D::dropLease()
{
    if (lease && node.address().address == lease->address.address)
        node.setAddress({});
    lease.reset();
    announcement = never;
}

void DhcpClient::D::lose(TimePoint now)
{
    const bool hadLease = lease.has_value();
    dropLease();
    if (hadLease && events.lost)
        events.lost(now);
}

void DhcpClient::D::beginRenewal(TimePoint now)
{
    state = State::Renewing;
    xid = quint32(random());
    retry = timing.firstRetry;
    sendRenewal(now);
}

TimePoint DhcpClient::D::nextRetry(TimePoint now, Duration waitMax)
{
    constexpr unsigned parts = 1024;
    std::uniform_int_distribution<unsigned> jitter(parts - parts / 4, parts + parts / 4);
    const Duration wait = retry / parts * jitter(random);
    retry = std::max(retry, std::min(retry * 2, waitMax));
    return after(now, wait);
}

void DhcpClient::D::sendByBroadcast(DhcpPacket& packet)
{
    if (node.address().isThere())
        packet.setFlags(dhcp::broadcastFlag);
    node.sendUdpFrame(MacAddress::broadcast(), {}, IpAddress::broadcast(), DhcpPacket::ClientPort,
                      DhcpPacket::ServerPort, packet.serialize());
}

void DhcpClient::D::sendDiscover(TimePoint now)
{
    ++discovers;
    due = nextRetry(now, timing.retryMax);
    const std::unique_ptr<DhcpPacket> discover(DhcpPacket::discover(node.mac(), xid));
    sendByBroadcast(*discover);
}

void DhcpClient::D::sendRequest(TimePoint now)
{
    if (requestsLeft == 0) {
        select(now);
        return;
    }
    --requestsLeft;
    asked = now;
    due = nextRetry(now, timing.retryMax);
    const std::unique_ptr<DhcpPacket> request(taken->packet.request(xid));
    sendByBroadcast(*request);
}

void DhcpClient::D::sendRenewal(TimePoint now)
{
    asked = now;
    if (state == State::Renewing && now >= rebinding) {
        state = State::Rebinding;
        retry = timing.firstRetry;
    }
    due = nextRetry(now, timing.renewRetryMax);
    if (state == State::Renewing)
        due = std::min(due, rebinding);
    const std::unique_ptr<DhcpPacket> renewal(taken->packet.renew(xid));
    const IpAddress to = state == State::Rebinding ? IpAddress::broadcast() : lease->server;
    node.sendUdp(to, DhcpPacket::ServerPort, DhcpPacket::ClientPort, renewal->serialize(), now);
}

// Straight to where the lease came from, since the address is gone before anybody could be asked.
void DhcpClient::D::sendRelease()
{
    DhcpPacket release;
    release.setRequest(true);
    release.setXid(quint32(random()));
    release.setChaddr(node.mac().rawBytes());
    release.setCiaddr(lease->address.address);
    dhcp::setType(release, Type::Release);
    dhcp::setAddressOption(release, dhcp::serverOption, lease->server);
    node.sendUdpFrame(taken->serverMac, lease->address.address, lease->server, DhcpPacket::ClientPort,
                      DhcpPacket::ServerPort, release.serialize());
}

void DhcpClient::D::receive(const Datagram& datagram, TimePoint now)
{
    auto answer = std::make_unique<Answer>(datagram);
    if (datagram.senderPort != DhcpPacket::ServerPort || !answer->isFor(node.mac(), xid))
        return;
    if (answer->type == Type::Offer && state == State::Selecting)
        receiveOffer(std::move(answer), now);
    else if (answer->type == Type::Acknowledge && isFromOurServer(*answer))
        receiveAcknowledge(std::move(answer), now);
    else if (answer->type == Type::Refuse && isFromOurServer(*answer))
        receiveRefusal(now);
}

// Whether the answer may be to a request of ours; while rebinding any server may answer.
bool DhcpClient::D::isFromOurServer(const Answer& answer) const
{
    if (state == State::Rebinding)
        return true;
    return (state == State::Requesting || state == State::Renewing) && answer.server == taken->server;
}

void DhcpClient::D::receiveOffer(std::unique_ptr<Answer> offer, TimePoint now)
{
    if (!offer->isUsable())
        return;
    taken = std::move(offer);
    state = State::Requesting;
    requestsLeft = timing.requests;
    retry = timing.firstRetry;
    sendRequest(now);
}

void DhcpClient::D::receiveAcknowledge(std::unique_ptr<Answer> acknowledge, TimePoint now)
{
    if (!acknowledge->isUsable() || acknowledge->packet.yiaddr() != taken->packet.yiaddr())
        return;
    taken = std::move(acknowledge);
    if (state != State::Requesting) {
        bindLease(now);
        return;
    }
    state = State::Probing;
    due = never;
    node.probe(
        taken->packet.yiaddr(), timing.probes, timing.probeInterval,
        [this](const std::optional<MacAddress>& user, TimePoint at) { probed(user, at); }, now, this);
}

void DhcpClient::D::receiveRefusal(TimePoint now)
{
    // Not at once: a server that offers and refuses would be asked without end.
    select(after(now, timing.firstRetry));
    if (events.refused)
        events.refused(now);
    lose(now);
}

void DhcpClient::D::probed(const std::optional<MacAddress>& user, TimePoint now)
{
    if (user)
        decline(now);
    else
        bindLease(now);
}

void DhcpClient::D::decline(TimePoint now)
{
    const IpAddress address = taken->packet.yiaddr();
    const std::unique_ptr<DhcpPacket> decline(taken->packet.decline(quint32(random())));
    sendByBroadcast(*decline);
    select(after(now, timing.declineWait));
    if (events.declined)
        events.declined(address, now);
    lose(now);
}

void DhcpClient::D::bindLease(TimePoint now)
{
    const DhcpPacket& granted = taken->packet;
    const quint32 leaseSeconds = taken->leaseSeconds();
    const Times times(granted, asked, leaseSeconds);
    DhcpLease given;
    given.address.address = granted.yiaddr();
    given.address.prefixBits = prefixOfMask(dhcp::numberOption(granted, dhcp::maskOption).value_or(0));
    if (given.address.prefixBits == 0)
        given.address.prefixBits = prefixOfClass(given.address.address);
    given.router = dhcp::addressOption(granted, dhcp::routerOption);
    given.server = taken->server;
    given.time = seconds(leaseSeconds);
    given.expires = secondsAfter(asked, leaseSeconds);
    const bool isNew = !lease;
    lease = given;
    state = State::Bound;
    due = times.renewal;
    rebinding = times.rebinding;
    node.setAddress(given.address);
    if (isNew) {
        announcement = after(now, timing.secondAnnouncement);
        node.announce();
    }
    if (events.bound)
        events.bound(given, now);
}

// What is due in the state.
void DhcpClient::D::act(TimePoint now)
{
    switch (state) {
    case State::Selecting:
        sendDiscover(now);
        break;
    case State::Requesting:
        sendRequest(now);
        break;
    case State::Bound:
        beginRenewal(now);
        break;
    case State::Renewing:
    case State::Rebinding:
        sendRenewal(now);
        break;
    case State::Stopped:
    case State::Probing:
        break;
    }
}

DhcpClient::DhcpClient(NetworkNode& node, const Timing& timing, Events events, quint32 seed)
    : d(std::make_unique<D>(node, timing, std::move(events), seed))
{
}

DhcpClient::~DhcpClient()
{
    stop();
}

void DhcpClient::start(TimePoint now)
{
    stop();
    D& r = *d;
    r.discovers = 0;
    r.node.bind(DhcpPacket::ClientPort,
                [&r](const Datagram& datagram, TimePoint at) { r.receive(datagram, at); });
    r.select(now);
    r.sendDiscover(now);
}

void DhcpClient::renew(TimePoint now)
{
    if (d->state == State::Bound)
        d->beginRenewal(now);
}

void DhcpClient::decline(TimePoint now)
{
    if (d->lease)
        d->decline(now);
}

void DhcpClient::release(TimePoint /*now*/)
{
    if (d->lease)
        d->sendRelease();
    stop();
}

void DhcpClient::stop()
{
    D& r = *d;
    if (r.state == State::Stopped)
        return;
    r.node.cancelProbes(&r);
    r.node.bind(DhcpPacket::ClientPort, {});
    r.state = State::Stopped;
    r.due = never;
    r.dropLease();
    r.taken.reset();
}

void DhcpClient::expire(TimePoint now)
{
    D& r = *d;
    if (now >= r.announcement) {
        r.announcement = never;
        r.node.announce();
    }
    if (r.lease && now >= r.lease->expires) {
        r.select(now);
        r.lose(now);
    } else if (now >= r.due) {
        r.act(now);
    }
}

TimePoint DhcpClient::nextDeadline() const
{
    const D& r = *d;
    const TimePoint expiry = r.lease ? r.lease->expires : never;
    return std::min({r.due, r.announcement, expiry});
}

DhcpClient::State DhcpClient::state() const
{
    return d->state;
}

const std::optional<DhcpLease>& DhcpClient::lease() const
{
    return d->lease;
}

unsigned DhcpClient::discoversSent() const
{
    return d->discovers;
}

} // namespace mesk::stack
