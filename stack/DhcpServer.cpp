#include "stack/DhcpServer.h"

#include "packets/DhcpPacket.h"
#include "stack/DhcpMessage.h"
#include "stack/LeaseTable.h"

#include <QtEndian>

#include <algorithm>
#include <utility>

namespace mesk::stack {

namespace {

using dhcp::Type;

constexpr int relayAt = 24; // giaddr in a message

// A client's message, and who sent it on: the client itself or a relay.
struct Question {
    DhcpPacket packet;
    MacAddress client;
    MacAddress senderMac;

    explicit Question(const Datagram& datagram)
        : packet(datagram.data)
        , client(dhcp::clientOf(packet))
        , senderMac(datagram.senderMac)
    {
    }
    // A client with a group's address would let one answer go to many.
    bool isWellFormed() const
    {
        return packet.isValid() && packet.isRequest() && client != MacAddress() &&
               (client.constData()[0] & 1) == 0;
    }
    bool isRelayed() const { return packet.giaddr() != IpAddress(); }
    // There is one pool, for one net.
    bool isFromNet(const NetAddress& net) const { return !isRelayed() || net.contains(packet.giaddr()); }
    IpAddress server() const { return dhcp::addressOption(packet, dhcp::serverOption); }
    IpAddress askedAddress() const { return dhcp::addressOption(packet, dhcp::askedAddressOption); }
};

} // namespace

struct DhcpServer::D {
    NetworkNode& node;
    const quint32 leaseSeconds;
    const Events events;
    LeaseTable table;
    quint64 unanswered = 0;

    D(NetworkNode& on, const Pool& pool, std::chrono::seconds leaseTime, Events calls)
        : node(on)
        , leaseSeconds(quint32(std::clamp<qint64>(leaseTime.count(), 1, dhcp::infiniteSeconds)))
        , events(std::move(calls))
        , table(pool)
    {
    }

    void receive(const Datagram& datagram, TimePoint now);
    void receiveDiscover(const Question& question, TimePoint now);
    void receiveRequest(const Question& question, TimePoint now);
    void receiveDecline(const Question& question, TimePoint now);
    void receiveRelease(const Question& question, TimePoint now);

    IpAddress addressFor(const Question& question) const;
    void refuse(const Question& question, const IpAddress& asked, TimePoint now);
    void change(const Lease& lease, TimePoint now);
    void takeBack(const IpAddress& address, TimePoint now);
    void expire(TimePoint now);

    void reply(const Question& question, const IpAddress& address);
    static void returnClientId(const Question& question, DhcpPacket& answer);
    void sendToRelay(const Question& question, const DhcpPacket& answer);
    void send(const MacAddress& toMac, const IpAddress& to, const DhcpPacket& answer);
    void sendByBroadcast(const DhcpPacket& answer)
    {
        send(MacAddress::broadcast(), IpAddress::broadcast(), answer);
    }
};

void DhcpServer::D::receive(const Datagram& datagram, TimePoint now)
{
    const Question question(datagram);
    if (!node.address().isThere() || !question.isWellFormed() || !question.isFromNet(node.address()))
        return;
    expire(now);
    switch (dhcp::typeOf(question.packet)) {
    case Type::Discover:
        receiveDiscover(question, now);
        break;
    case Type::Request:
        receiveRequest(question, now);
        break;
    case Type::Decline:
        receiveDecline(question, now);
        break;
    case Type::Release:
        receiveRelease(question, now);
        break;
    default:
        break;
    }
}

void DhcpServer::D::receiveDiscover(const Question& question, TimePoint now)
{
    const IpAddress address = addressFor(question);
    if (address == IpAddress()) {
        ++unanswered;
        return;
    }
    // A client that forgot its lease doesn't lose it before it takes the offer.
    const auto lease = table.ofClient(question.client);
    if (!lease || lease->state != LeaseState::Bound || lease->address != address)
        change({question.client, address, LeaseState::Offered, after(now, offerTime)}, now);
    reply(question, address);
}

IpAddress DhcpServer::D::addressFor(const Question& question) const
{
    const NetAddress& own = node.address();
    const auto lease = table.ofClient(question.client);
    if (lease && table.isOpenTo(question.client, lease->address, own))
        return lease->address;
    const IpAddress asked = question.askedAddress();
    return table.isOpenTo(question.client, asked, own) ? asked : table.findFree(own);
}

// RFC 2131, 4.3.2: who takes an offer names the server, who reboots the address alone, who prolongs has it.
void DhcpServer::D::receiveRequest(const Question& question, TimePoint now)
{
    const NetAddress& own = node.address();
    const auto lease = table.ofClient(question.client);
    const bool namesServer = question.server() != IpAddress();
    if (namesServer && question.server() != own.address) {
        if (lease && lease->state == LeaseState::Offered)
            takeBack(lease->address, now);
        return;
    }
    const IpAddress ciaddr = question.packet.ciaddr();
    const IpAddress asked = ciaddr != IpAddress() ? ciaddr : question.askedAddress();
    const bool hasOther = lease && lease->state != LeaseState::Released && lease->address != asked;
    if (!hasOther && table.isOpenTo(question.client, asked, own)) {
        const bool isEndless = leaseSeconds == dhcp::infiniteSeconds;
        const TimePoint expires = isEndless ? never : after(now, std::chrono::seconds(leaseSeconds));
        change({question.client, asked, LeaseState::Bound, expires}, now);
        reply(question, asked);
        return;
    }
    // Of other addresses of the net another server may know.
    if (namesServer || hasOther || table.isOfPool(asked) || !own.contains(asked))
        refuse(question, asked, now);
}

void DhcpServer::D::receiveDecline(const Question& question, TimePoint now)
{
    const auto lease = table.ofClient(question.client);
    if (question.server() == node.address().address && lease && lease->state != LeaseState::Released &&
        lease->address == question.askedAddress())
        change({question.client, lease->address, LeaseState::Declined, after(now, declineTime)}, now);
}

void DhcpServer::D::receiveRelease(const Question& question, TimePoint now)
{
    const auto lease = table.ofClient(question.client);
    if (question.server() == node.address().address && lease && lease->state == LeaseState::Bound &&
        lease->address == question.packet.ciaddr())
        takeBack(lease->address, now);
}

void DhcpServer::D::refuse(const Question& question, const IpAddress& asked, TimePoint now)
{
    if (events.refused)
        events.refused(question.client, asked, now);
    DhcpPacket refusal;
    refusal.setRequest(false);
    refusal.setXid(question.packet.xid());
    refusal.setChaddr(question.packet.chaddr());
    // The client may have no address any more: a relay too has to send it by broadcast.
    refusal.setFlags(question.packet.flags() | (question.isRelayed() ? dhcp::broadcastFlag : 0));
    dhcp::setType(refusal, Type::Refuse);
    dhcp::setAddressOption(refusal, dhcp::serverOption, node.address().address);
    returnClientId(question, refusal);
    if (question.isRelayed())
        sendToRelay(question, refusal);
    else
        sendByBroadcast(refusal);
}

void DhcpServer::D::change(const Lease& lease, TimePoint now)
{
    table.put(lease);
    if (events.changed)
        events.changed(lease, now);
}

void DhcpServer::D::takeBack(const IpAddress& address, TimePoint now)
{
    const Lease freed = table.takeBack(address);
    if (events.changed)
        events.changed(freed, now);
}

void DhcpServer::D::expire(TimePoint now)
{
    for (const IpAddress& address : table.expired(now))
        takeBack(address, now);
}

// To where RFC 2131, 4.1 has it; straight to the client's MAC address, since it can't answer a question for
// its address yet.
void DhcpServer::D::reply(const Question& question, const IpAddress& address)
{
    const DhcpPacket& asked = question.packet;
    const NetAddress& own = node.address();
    const std::unique_ptr<DhcpPacket> answer(asked.reply(address, own.address, nullptr, leaseSeconds));
    dhcp::setAddressOption(*answer, dhcp::maskOption, own.mask());
    returnClientId(question, *answer);
    if (question.isRelayed())
        sendToRelay(question, *answer);
    else if (asked.ciaddr() != IpAddress())
        send(question.client, asked.ciaddr(), *answer);
    else if ((asked.flags() & dhcp::broadcastFlag) != 0)
        sendByBroadcast(*answer);
    else
        send(question.client, address, *answer);
}

// RFC 6842: by which some clients know that an answer is theirs. An empty one would be written as its code
// alone, which says something else.
void DhcpServer::D::returnClientId(const Question& question, DhcpPacket& answer)
{
    const QByteArray id = question.packet.option(dhcp::clientIdOption);
    if (!id.isEmpty())
        answer.setOption(dhcp::clientIdOption, id);
}

void DhcpServer::D::sendToRelay(const Question& question, const DhcpPacket& answer)
{
    QByteArray bytes = answer.serialize();
    const quint32 relay = qToBigEndian(question.packet.giaddr().toUInt32());
    bytes.replace(relayAt, int(sizeof relay), reinterpret_cast<const char*>(&relay), int(sizeof relay));
    node.sendUdpFrame(question.senderMac, node.address().address, question.packet.giaddr(),
                      DhcpPacket::ServerPort, DhcpPacket::ServerPort, bytes);
}

void DhcpServer::D::send(const MacAddress& toMac, const IpAddress& to, const DhcpPacket& answer)
{
    node.sendUdpFrame(toMac, node.address().address, to, DhcpPacket::ServerPort, DhcpPacket::ClientPort,
                      answer.serialize());
}

DhcpServer::DhcpServer(NetworkNode& node, const Pool& pool, std::chrono::seconds leaseTime, Events events)
    : d(std::make_unique<D>(node, pool, leaseTime, std::move(events)))
{
    node.bind(DhcpPacket::ServerPort,
              [&r = *d](const Datagram& datagram, TimePoint now) { r.receive(datagram, now); });
}

DhcpServer::~DhcpServer()
{
    d->node.bind(DhcpPacket::ServerPort, {});
}

void DhcpServer::expire(TimePoint now)
{
    d->expire(now);
}

TimePoint DhcpServer::nextDeadline() const
{
    return d->table.nextExpiry();
}

std::vector<DhcpServer::Lease> DhcpServer::leases() const
{
    return d->table.all();
}

bool DhcpServer::isExhausted() const
{
    return d->table.findFree(d->node.address()) == IpAddress();
}

quint64 DhcpServer::discoversUnanswered() const
{
    return d->unanswered;
}

} // namespace mesk::stack
