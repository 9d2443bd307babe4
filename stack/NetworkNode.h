#pragma once

#include "packets/IpAddress.h"
#include "packets/MacAddress.h"
#include "stack/Time.h"

#include <QByteArray>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

namespace mesk::stack {

/// An address and the length of its net's prefix. The default is no address.
struct NetAddress {
    IpAddress address;
    unsigned prefixBits = 0; ///< 0 to 32

    /// False for 0.0.0.0.
    bool isThere() const;
    IpAddress mask() const;
    /// The net's broadcast address; 255.255.255.255 where the net has none of its own, with a prefix of 31 or
    /// 32 bits (RFC 3021).
    IpAddress broadcast() const;
    /// Whether @p other belongs to the same net.
    bool contains(const IpAddress& other) const;
};

/// A UDP datagram that came for this node.
struct Datagram {
    MacAddress senderMac;
    IpAddress sender;
    IpAddress destination; ///< own address, or a broadcast address; any while the node has no address
    quint16 senderPort = 0;
    quint16 destinationPort = 0;
    QByteArray data;
};

/// One node of an Ethernet with IPv4: address resolution (RFC 826, 5227), echo (RFC 792) and UDP (RFC 768) on
/// the packet classes. It has no thread, no clock and no socket: frames and times are handed in, frames come
/// out, so the same node runs behind a port of the plugin and inside an emulated device. State that input can
/// let grow is bounded.
///
/// No checksum is verified on input: a kernel with checksum offload sends partial sums. Fragments, tagged
/// frames and frames to others are dropped and counted. A closed port is not answered (no ICMP error is ever
/// sent), nor is an echo request that didn't come to the own address alone.
///
/// Callbacks are called within receive(), expire() or the call that they answer, and may call the node again,
/// but must not destroy it. A frame may be handed in from within SendFrame. Never throws. [one thread at a
/// time]
class NetworkNode {
public:
    /// Takes a whole Ethernet frame without its check sequence: 60 to 1514 bytes, an even number of them.
    using SendFrame = std::function<void(const QByteArray& frame)>;
    using ReceiveDatagram = std::function<void(const Datagram& datagram, TimePoint now)>;
    /// @param mac of the owner; nothing if nobody answered.
    using Resolved = std::function<void(const std::optional<MacAddress>& mac, TimePoint now)>;
    /// @param isDefended false soon after the last one: the other one doesn't go.
    using Conflict = std::function<void(const MacAddress& who, bool isDefended, TimePoint now)>;

    struct EchoReply {
        IpAddress sender;
        quint16 id = 0;
        quint16 sequence = 0;
        QByteArray data;
    };
    using ReceiveEchoReply = std::function<void(const EchoReply& reply, TimePoint now)>;

    /// Since the node was made. A received frame moves at most one of the counters from malformed on.
    struct Counters {
        quint64 framesIn = 0; ///< handed in
        quint64 framesOut = 0;
        quint64 malformed = 0;        ///< cut short, a wrong length or version, or larger than a frame may be
        quint64 fromSelf = 0;         ///< the own frame came back
        quint64 toOtherMac = 0;       ///< neither to the own MAC address nor broadcast
        quint64 tagged = 0;           ///< IEEE 802.1Q
        quint64 unknownType = 0;      ///< neither ARP nor IPv4
        quint64 fragments = 0;        ///< of IPv4
        quint64 toOtherAddress = 0;   ///< IPv4 to an address that isn't the node's
        quint64 impossibleSender = 0; ///< a group, a net, loopback or the node itself as sender
        quint64 unboundPort = 0;      ///< UDP to a port without a receiver
        quint64 unusedMessage = 0;    ///< IPv4 of another protocol, ICMP that isn't echo to this node
        quint64 datagramsRefused = 0; ///< too large to send, or to one node while this one has no address
        quint64 datagramsUndelivered = 0; ///< given up while they waited for an address
        quint64 conflicts = 0;            ///< ARP messages of somebody else with the own address
    };

    static constexpr int datagramSizeMaxBytes = 1472; ///< data of the largest datagram and echo in one frame
    static constexpr std::size_t neighboursMax = 256; ///< known addresses; the oldest makes room
    static constexpr std::size_t resolutionsMax = 64; ///< addresses asked for at once; the oldest is given up
    static constexpr std::size_t waitingPerNeighbourMax =
        8; ///< datagrams to one address; the oldest is given up
    static constexpr Duration neighbourLifetime = std::chrono::seconds(60); ///< then it is asked for again
    static constexpr unsigned resolutionRequests = 3;
    static constexpr Duration resolutionInterval = std::chrono::seconds(1);
    static constexpr Duration defendInterval = std::chrono::seconds(10); ///< RFC 5227, DEFEND_INTERVAL

    NetworkNode(const MacAddress& mac, SendFrame send);
    NetworkNode(const NetworkNode&) = delete;
    NetworkNode& operator=(const NetworkNode&) = delete;
    ~NetworkNode();

    const MacAddress& mac() const;
    const NetAddress& address() const;
    /// No address: answers no request, sends from 0.0.0.0 and by broadcast only, takes unicast to its MAC for
    /// any address, but only datagrams to a bound port. Of another address, datagrams that still wait for a
    /// resolution are given up.
    void setAddress(const NetAddress& address);

    /// @param frame a whole Ethernet frame; a check sequence at its end does no harm.
    void receive(const QByteArray& frame, TimePoint now);
    /// Does what is due. To be called at nextDeadline() or later.
    void expire(TimePoint now);
    TimePoint nextDeadline() const;

    /// One receiver per port; a second one takes the place of the first, an empty one frees the port.
    void bind(quint16 port, ReceiveDatagram receiver);
    /// Broadcast goes out at once, anything else once its address is resolved; outside of the own net the
    /// address is still resolved directly (no router).
    /// @returns false, and nothing goes out, for more data than datagramSizeMaxBytes, or without an own
    /// address but by broadcast.
    bool sendUdp(const IpAddress& to, quint16 toPort, quint16 fromPort, const QByteArray& data,
                 TimePoint now);
    /// Without resolution, with a source address of the caller's. @returns false for too much data.
    bool sendUdpFrame(const MacAddress& toMac, const IpAddress& from, const IpAddress& to, quint16 fromPort,
                      quint16 toPort, const QByteArray& data);

    /// Asks up to three times, unless the node knows already, or has no address to ask from: then @p resolved
    /// is called at once.
    void resolve(const IpAddress& address, Resolved resolved, TimePoint now);
    /// Asks whether somebody uses an address (RFC 5227 probe: sender address 0), or probes for it too.
    /// @param resolved gets who, or nothing if nobody answers until @p interval after the last probe.
    /// @param owner for cancelProbes(); only its address counts.
    void probe(const IpAddress& address, unsigned probes, Duration interval, Resolved resolved, TimePoint now,
               const void* owner = nullptr);
    /// Ends all probes of an owner; their callbacks won't be called.
    void cancelProbes(const void* owner);
    /// Two announcements are the caller's business: this sends one.
    void announce();
    /// Called whenever somebody else uses the own address. The node defends it by itself, with one
    /// announcement per defendInterval at most (RFC 5227, 2.4); to give the address up, when one isn't
    /// defended any more, is the caller's business.
    void onConflict(Conflict conflict);

    /// @returns as sendUdp().
    bool sendEcho(const IpAddress& to, quint16 id, quint16 sequence, const QByteArray& data, TimePoint now);
    void onEchoReply(ReceiveEchoReply received);

    const Counters& counters() const;

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::stack
