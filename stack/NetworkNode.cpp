#include "stack/NetworkNode.h"

#include "packets/ArpPacket.h"
#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"
#include "packets/EthernetFrame.h"
#include "packets/IPv4Packet.h"
#include "packets/IcmpPacket.h"
#include "packets/UdpPacket.h"
#include "stack/NeighbourCache.h"

#include <QtEndian>

#include <algorithm>
#include <deque>
#include <iterator>
#include <map>
#include <utility>
#include <vector>

namespace mesk::stack {

namespace {

constexpr unsigned addressBits = 32;

constexpr int packetAt = int(EthernetFrame::headerSizeBytes), typeAt = packetAt - 2;
constexpr int ipHeaderMinBytes = 20, ipPacketMaxBytes = 1500;
constexpr int udpHeaderBytes = 8, echoHeaderBytes = 8, idAndSequenceBytes = 4;
static_assert(ipPacketMaxBytes - ipHeaderMinBytes - udpHeaderBytes == NetworkNode::datagramSizeMaxBytes);

constexpr quint8 ipVersion = 4;
constexpr quint16 moreFragments = 0x2000, fragmentOffset = 0x1fff;
constexpr quint8 echoReplyType = 0, echoRequestType = 8, echoCode = 0;
constexpr quint16 requestOperation = 1; // of ARP

// IEEE 802: the first bit on the wire tells a group's address.
bool isOneStation(const MacAddress& mac)
{
    return (mac.constData()[0] & 1) == 0 && mac != MacAddress();
}

// 224.0.0.0 to 255.255.255.255: multicast, reserved and limited broadcast (RFC 1112).
bool isGroup(const IpAddress& address)
{
    return address.toUInt32() >= 0xe0000000U;
}

// 127/8 never comes from a wire (RFC 1122, 3.2.1.3).
bool isLoopback(const IpAddress& address)
{
    return address.toUInt32() >> 24 == 127;
}

// 169.254/16 (RFC 3927).
bool isLinkLocal(const IpAddress& address)
{
    return address.toUInt32() >> 16 == 0xa9feU;
}

// The fields of an IPv4 header (RFC 791) that IPv4Packet doesn't keep.
struct IpHeader {
    explicit IpHeader(const ByteSlice& packet)
        : versionAndSize(readField<quint8>(packet, 0))
        , totalLength(readField<quint16>(packet, 2))
        , fragment(readField<quint16>(packet, 6))
    {
    }
    int sizeBytes() const { return (versionAndSize & 0x0f) * 4; }
    bool isWellFormed(int thereBytes) const
    {
        return versionAndSize >> 4 == ipVersion && sizeBytes() >= ipHeaderMinBytes &&
               totalLength >= sizeBytes() && totalLength <= std::min(thereBytes, ipPacketMaxBytes);
    }
    bool isFragment() const { return (fragment & (moreFragments | fragmentOffset)) != 0; }

    quint8 versionAndSize;
    quint16 totalLength;
    quint16 fragment;
};

// An address that is asked for, and what waits for the answer.
struct Resolution {
    unsigned requestsLeft = NetworkNode::resolutionRequests;
    TimePoint due = never;
    quint64 number = 0;
    std::vector<NetworkNode::Resolved> waiters;
    std::deque<std::unique_ptr<IPv4Packet>> datagrams;
};

struct Probe {
    IpAddress address;
    unsigned probesLeft = 0;
    Duration interval{};
    TimePoint due = never;
    NetworkNode::Resolved resolved;
    const void* owner = nullptr;
};

// Of the elements that are wanted, so that what is done with one may change the others.
template <typename Map, typename Wanted>
std::vector<typename Map::key_type> keysOf(const Map& map, Wanted isWanted)
{
    std::vector<typename Map::key_type> keys;
    for (const auto& [key, value] : map)
        if (isWanted(value))
            keys.push_back(key);
    return keys;
}

} // namespace

bool NetAddress::isThere() const
{
    return address != IpAddress();
}

IpAddress NetAddress::mask() const
{
    const unsigned hostBits = addressBits - std::min(prefixBits, addressBits);
    return IpAddress(quint32(~quint64(0) << hostBits));
}

IpAddress NetAddress::broadcast() const
{
    if (prefixBits + 1 >= addressBits)
        return IpAddress::broadcast();
    return IpAddress(address.toUInt32() | ~mask().toUInt32());
}

bool NetAddress::contains(const IpAddress& other) const
{
    return ((address.toUInt32() ^ other.toUInt32()) & mask().toUInt32()) == 0;
}

struct NetworkNode::D {
    MacAddress mac;
    SendFrame send;
    NetAddress own;
    Counters counters;
    // A receiver may bind its own port anew while it runs: whoever calls it holds it.
    std::map<quint16, std::shared_ptr<const ReceiveDatagram>> receivers;
    NeighbourCache neighbours{neighboursMax, neighbourLifetime};
    std::map<quint32, Resolution> resolutions;
    std::map<quint64, Probe> probes;
    quint64 numbers = 0; // of resolutions and probes, in the order of their beginnings
    Conflict conflict;
    ReceiveEchoReply echoReceived;
    TimePoint mayDefendFrom = TimePoint::min();

    D(const MacAddress& ownMac, SendFrame sendFrame)
        : mac(ownMac)
        , send(std::move(sendFrame))
    {
    }

    void sendPacket(const MacAddress& to, InternetPacket& packet);
    void sendArp(const MacAddress& to, ArpPacket* built);
    bool sendDatagram(const IpAddress& to, TransportPacket& transport, TimePoint now);
    void leaveAddress();
    bool isTooLarge(const QByteArray& data);
    bool isBroadcast(const IpAddress& to) const
    {
        return to.isBroadcast() || (own.isThere() && to == own.broadcast());
    }

    template <typename Add>
    void await(quint32 address, TimePoint now, Add add);
    void ask(quint32 address, TimePoint now);
    void endResolution(quint32 address, const std::optional<MacAddress>& owner, TimePoint now);
    void giveUpOldestResolution(TimePoint now);

    void stepProbe(quint64 number, TimePoint now);
    void endProbe(quint64 number, const std::optional<MacAddress>& who, TimePoint now);

    void receiveArp(const ByteSlice& packet, TimePoint now);
    void endContestedProbes(const ArpPacket& arp, TimePoint now);
    void learn(const IpAddress& address, const MacAddress& owner, bool isAsked, TimePoint now);
    void defend(const MacAddress& who, TimePoint now);
    void receiveIp(const ByteSlice& bytes, const EthernetFrame& frame, TimePoint now);
    bool isForUs(const IpAddress& destination, const MacAddress& frameDestination) const;
    bool isImpossibleSender(const IpAddress& sender) const;
    void receiveUdp(const UdpPacket& udp, const IPv4Packet& ip, const EthernetFrame& frame, TimePoint now);
    void receiveIcmp(const IcmpPacket& icmp, const IPv4Packet& ip, const EthernetFrame& frame, TimePoint now);
};

void NetworkNode::D::sendPacket(const MacAddress& to, InternetPacket& packet)
{
    QByteArray frame = EthernetFrame(mac, to, &packet).serialize();
    if (frame.size() % 2 != 0)
        frame.append('\0');
    ++counters.framesOut;
    send(frame);
}

// Takes the message over.
void NetworkNode::D::sendArp(const MacAddress& to, ArpPacket* built)
{
    const std::unique_ptr<ArpPacket> arp(built);
    sendPacket(to, *arp);
}

bool NetworkNode::D::isTooLarge(const QByteArray& data)
{
    if (data.size() <= datagramSizeMaxBytes)
        return false;
    ++counters.datagramsRefused;
    return true;
}

bool NetworkNode::D::sendDatagram(const IpAddress& to, TransportPacket& transport, TimePoint now)
{
    // An ARP request from nobody would be a probe for the other one's address (RFC 5227, 2.1.1).
    if (!own.isThere() && !isBroadcast(to)) {
        ++counters.datagramsRefused;
        return false;
    }
    IPv4Packet ip(own.address, to, &transport);
    if (isBroadcast(to)) {
        sendPacket(MacAddress::broadcast(), ip);
    } else if (const auto known = neighbours.find(to, now)) {
        sendPacket(*known, ip);
    } else {
        await(to.toUInt32(), now, [&](Resolution& resolution) {
            if (resolution.datagrams.size() == waitingPerNeighbourMax) {
                resolution.datagrams.pop_front();
                ++counters.datagramsUndelivered;
            }
            resolution.datagrams.emplace_back(ip.clone());
        });
    }
    return true;
}

// What waits would go out from an address that isn't the node's any more (RFC 1122, 3.2.1.3).
void NetworkNode::D::leaveAddress()
{
    for (auto at = resolutions.begin(); at != resolutions.end();) {
        Resolution& resolution = at->second;
        counters.datagramsUndelivered += resolution.datagrams.size();
        resolution.datagrams.clear();
        at = resolution.waiters.empty() ? resolutions.erase(at) : std::next(at);
    }
    mayDefendFrom = TimePoint::min();
}

// Adds what waits to the resolution of an address, which begins with it if there is none.
template <typename Add>
void NetworkNode::D::await(quint32 address, TimePoint now, Add add)
{
    const auto [place, isNew] = resolutions.try_emplace(address);
    add(place->second);
    if (!isNew)
        return;
    place->second.number = ++numbers;
    if (resolutions.size() > resolutionsMax)
        giveUpOldestResolution(now);
    ask(address, now);
}

// Asks once more, or ends the resolution. Nothing of it is held meanwhile: the answer may come from within
// send.
void NetworkNode::D::ask(quint32 address, TimePoint now)
{
    const auto found = resolutions.find(address);
    if (found == resolutions.end())
        return;
    if (found->second.requestsLeft == 0 || !own.isThere()) {
        endResolution(address, {}, now);
        return;
    }
    --found->second.requestsLeft;
    found->second.due = after(now, resolutionInterval);
    sendArp(MacAddress::broadcast(), ArpPacket::request(own.address, mac, IpAddress(address)));
}

void NetworkNode::D::endResolution(quint32 address, const std::optional<MacAddress>& owner, TimePoint now)
{
    auto node = resolutions.extract(address);
    if (node.empty())
        return;
    const Resolution& ended = node.mapped();
    for (const auto& datagram : ended.datagrams) {
        if (owner)
            sendPacket(*owner, *datagram);
        else
            ++counters.datagramsUndelivered;
    }
    for (const Resolved& resolved : ended.waiters)
        resolved(owner, now);
}

void NetworkNode::D::giveUpOldestResolution(TimePoint now)
{
    const auto oldest =
        std::min_element(resolutions.begin(), resolutions.end(),
                         [](const auto& a, const auto& b) { return a.second.number < b.second.number; });
    endResolution(oldest->first, {}, now);
}

void NetworkNode::D::stepProbe(quint64 number, TimePoint now)
{
    const auto found = probes.find(number);
    if (found == probes.end())
        return;
    Probe& probe = found->second;
    if (probe.probesLeft == 0) {
        endProbe(number, {}, now);
        return;
    }
    --probe.probesLeft;
    probe.due = after(now, probe.interval);
    sendArp(MacAddress::broadcast(), ArpPacket::probe(probe.address, mac));
}

void NetworkNode::D::endProbe(quint64 number, const std::optional<MacAddress>& who, TimePoint now)
{
    const auto node = probes.extract(number);
    if (!node.empty())
        node.mapped().resolved(who, now);
}

void NetworkNode::D::receiveArp(const ByteSlice& packet, TimePoint now)
{
    const ArpPacket arp(packet);
    const MacAddress& sender = arp.senderMacAddress();
    const IpAddress senderIp = arp.sourceAddress();
    if (arp.operation() == 0) {
        ++counters.malformed;
        return;
    }
    if (!isOneStation(sender) || sender == mac || isGroup(senderIp)) {
        ++counters.impossibleSender;
        return;
    }
    endContestedProbes(arp, now);
    if (own.isThere() && senderIp == own.address) {
        defend(sender, now);
        return;
    }
    const bool isAsked = own.isThere() && arp.destinationAddress() == own.address;
    if (senderIp != IpAddress())
        learn(senderIp, sender, isAsked, now);
    // RFC 3927, 2.5: who has the same link-local address is to hear of it.
    if (isAsked && arp.operation() == requestOperation)
        sendArp(isLinkLocal(own.address) ? MacAddress::broadcast() : sender, arp.reply(own.address, mac));
}

// An address is in use if somebody sends from it, and claimed by somebody who probes for it too (RFC
// 5227, 2.1.1).
void NetworkNode::D::endContestedProbes(const ArpPacket& arp, TimePoint now)
{
    const IpAddress claimed =
        arp.sourceAddress() != IpAddress() ? arp.sourceAddress() : arp.destinationAddress();
    for (const quint64 number : keysOf(probes, [&](const Probe& each) { return each.address == claimed; }))
        endProbe(number, arp.senderMacAddress(), now);
}

void NetworkNode::D::defend(const MacAddress& who, TimePoint now)
{
    ++counters.conflicts;
    const bool isDefended = now >= mayDefendFrom;
    if (isDefended) {
        mayDefendFrom = after(now, defendInterval);
        sendArp(MacAddress::broadcast(), ArpPacket::announcement(own.address, mac));
    }
    if (const Conflict call = conflict)
        call(who, isDefended, now);
}

// RFC 826: what is known is brought up to date by any message, but only who asks for this node is new.
void NetworkNode::D::learn(const IpAddress& address, const MacAddress& owner, bool isAsked, TimePoint now)
{
    const bool isAwaited = resolutions.count(address.toUInt32()) != 0;
    if (!isAsked && !isAwaited) {
        neighbours.update(address, owner, now);
        return;
    }
    neighbours.add(address, owner, now);
    endResolution(address.toUInt32(), owner, now);
}

void NetworkNode::D::receiveIp(const ByteSlice& bytes, const EthernetFrame& frame, TimePoint now)
{
    const IpHeader header(bytes);
    if (!header.isWellFormed(bytes.size())) {
        ++counters.malformed;
        return;
    }
    const IPv4Packet ip{ByteSlice(bytes)};
    if (!isForUs(ip.destinationAddress(), frame.destination())) {
        ++counters.toOtherAddress;
    } else if (isImpossibleSender(ip.sourceAddress())) {
        ++counters.impossibleSender;
    } else if (header.isFragment()) {
        ++counters.fragments;
    } else {
        const std::unique_ptr<TransportPacket> transport(ip.transportPacket());
        if (const auto* udp = dynamic_cast<const UdpPacket*>(transport.get()))
            receiveUdp(*udp, ip, frame, now);
        else if (const auto* icmp = dynamic_cast<const IcmpPacket*>(transport.get()))
            receiveIcmp(*icmp, ip, frame, now);
        else
            ++counters.unusedMessage;
    }
}

// A datagram to one address in a frame to all is nobody's (RFC 1122, 3.3.6).
bool NetworkNode::D::isForUs(const IpAddress& destination, const MacAddress& frameDestination) const
{
    if (isBroadcast(destination))
        return true;
    return !frameDestination.isBroadcast() && (!own.isThere() || destination == own.address);
}

bool NetworkNode::D::isImpossibleSender(const IpAddress& sender) const
{
    // The number of the net, which has one where it has a broadcast address.
    const bool isNet = own.broadcast() != IpAddress::broadcast() &&
                       sender.toUInt32() == (own.address.toUInt32() & own.mask().toUInt32());
    return isGroup(sender) || isLoopback(sender) ||
           (own.isThere() && (sender == own.address || isNet || isBroadcast(sender)));
}

void NetworkNode::D::receiveUdp(const UdpPacket& udp, const IPv4Packet& ip, const EthernetFrame& frame,
                                TimePoint now)
{
    if (ip.payloadSize() < quint32(udpHeaderBytes) || !udp.isValid()) {
        ++counters.malformed;
        return;
    }
    const auto found = receivers.find(udp.destinationPort());
    if (found == receivers.end()) {
        ++counters.unboundPort;
        return;
    }
    const auto receiver = found->second;
    (*receiver)({frame.source(), ip.sourceAddress(), ip.destinationAddress(), udp.sourcePort(),
                 udp.destinationPort(), udp.payload()},
                now);
}

void NetworkNode::D::receiveIcmp(const IcmpPacket& icmp, const IPv4Packet& ip, const EthernetFrame& frame,
                                 TimePoint now)
{
    const QByteArray& echo = icmp.payload();
    if (ip.payloadSize() < quint32(echoHeaderBytes)) {
        ++counters.malformed;
        return;
    }
    const bool isEcho = own.isThere() && ip.destinationAddress() == own.address &&
                        ip.sourceAddress() != IpAddress() && icmp.code() == echoCode;
    const std::unique_ptr<IcmpPacket> reply(isEcho ? icmp.echoReply() : nullptr);
    const ReceiveEchoReply call = isEcho && icmp.type() == echoReplyType ? echoReceived : nullptr;
    if (reply) {
        // Back where it came from: to ask for an address first would cost more than the question did.
        IPv4Packet answer(own.address, ip.sourceAddress(), reply.get());
        sendPacket(frame.source(), answer);
    } else if (call) {
        call({ip.sourceAddress(), readField<quint16>(echo, 0), readField<quint16>(echo, 2), echo.mid(4)},
             now);
    } else {
        ++counters.unusedMessage;
    }
}

NetworkNode::NetworkNode(const MacAddress& mac, SendFrame send)
    : d(std::make_unique<D>(mac, std::move(send)))
{
}

NetworkNode::~NetworkNode() = default;

const MacAddress& NetworkNode::mac() const
{
    return d->mac;
}

const NetAddress& NetworkNode::address() const
{
    return d->own;
}

void NetworkNode::setAddress(const NetAddress& address)
{
    if (address.address != d->own.address)
        d->leaveAddress();
    d->own = address;
}

void NetworkNode::receive(const QByteArray& frame, TimePoint now)
{
    D& r = *d;
    Counters& counters = r.counters;
    ++counters.framesIn;
    const EthernetFrame ethernet(frame);
    const ByteSlice packet = ByteSlice(frame).mid(packetAt);
    if (frame.size() < packetAt)
        ++counters.malformed;
    else if (ethernet.source() == r.mac)
        ++counters.fromSelf;
    else if (ethernet.destination() != r.mac && !ethernet.destination().isBroadcast())
        ++counters.toOtherMac;
    else if (!isOneStation(ethernet.source()))
        ++counters.impossibleSender;
    else if (readField<quint16>(frame, typeAt) == EthernetFrame::vlanTagType)
        ++counters.tagged;
    else if (ethernet.etherType() == ArpPacket::EtherType)
        r.receiveArp(packet, now);
    else if (ethernet.etherType() == IPv4Packet::EtherType)
        r.receiveIp(packet, ethernet, now);
    else
        ++counters.unknownType;
}

void NetworkNode::expire(TimePoint now)
{
    D& r = *d;
    const auto isDue = [now](const auto& each) { return each.due <= now; };
    for (const quint32 address : keysOf(r.resolutions, isDue))
        r.ask(address, now);
    for (const quint64 number : keysOf(r.probes, isDue))
        r.stepProbe(number, now);
}

TimePoint NetworkNode::nextDeadline() const
{
    const D& r = *d;
    TimePoint next = never;
    for (const auto& each : r.resolutions)
        next = std::min(next, each.second.due);
    for (const auto& each : r.probes)
        next = std::min(next, each.second.due);
    return next;
}

void NetworkNode::bind(quint16 port, ReceiveDatagram receiver)
{
    if (receiver)
        d->receivers[port] = std::make_shared<const ReceiveDatagram>(std::move(receiver));
    else
        d->receivers.erase(port);
}

bool NetworkNode::sendUdp(const IpAddress& to, quint16 toPort, quint16 fromPort, const QByteArray& data,
                          TimePoint now)
{
    if (d->isTooLarge(data))
        return false;
    UdpPacket udp(fromPort, toPort, data, true);
    return d->sendDatagram(to, udp, now);
}

bool NetworkNode::sendUdpFrame(const MacAddress& toMac, const IpAddress& from, const IpAddress& to,
                               quint16 fromPort, quint16 toPort, const QByteArray& data)
{
    if (d->isTooLarge(data))
        return false;
    UdpPacket udp(fromPort, toPort, data, true);
    IPv4Packet ip(from, to, &udp);
    d->sendPacket(toMac, ip);
    return true;
}

void NetworkNode::resolve(const IpAddress& address, Resolved resolved, TimePoint now)
{
    if (const auto known = d->neighbours.find(address, now))
        resolved(known, now);
    else
        d->await(address.toUInt32(), now,
                 [&](Resolution& resolution) { resolution.waiters.push_back(std::move(resolved)); });
}

void NetworkNode::probe(const IpAddress& address, unsigned probes, Duration interval, Resolved resolved,
                        TimePoint now, const void* owner)
{
    const quint64 number = ++d->numbers;
    d->probes[number] = {address, probes, interval, never, std::move(resolved), owner};
    d->stepProbe(number, now);
}

void NetworkNode::cancelProbes(const void* owner)
{
    for (const quint64 number : keysOf(d->probes, [owner](const Probe& each) { return each.owner == owner; }))
        d->probes.erase(number);
}

void NetworkNode::announce()
{
    if (d->own.isThere())
        d->sendArp(MacAddress::broadcast(), ArpPacket::announcement(d->own.address, d->mac));
}

void NetworkNode::onConflict(Conflict conflict)
{
    d->conflict = std::move(conflict);
}

bool NetworkNode::sendEcho(const IpAddress& to, quint16 id, quint16 sequence, const QByteArray& data,
                           TimePoint now)
{
    if (d->isTooLarge(data))
        return false;
    QByteArray echo(idAndSequenceBytes, Qt::Uninitialized);
    qToBigEndian(id, echo.data());
    qToBigEndian(sequence, echo.data() + sizeof(id));
    IcmpPacket request(echoRequestType, echoCode, echo + data);
    return d->sendDatagram(to, request, now);
}

void NetworkNode::onEchoReply(ReceiveEchoReply received)
{
    d->echoReceived = std::move(received);
}

const NetworkNode::Counters& NetworkNode::counters() const
{
    return d->counters;
}

} // namespace mesk::stack
