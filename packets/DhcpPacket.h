#pragma once

#include "packets/ApplicationPacket.h"
#include "packets/PlacedRecord.h"

#include <QList>

class ByteSlice;
class IpAddress;
class MacAddress;

/// DHCP message (RFC 2131) for Ethernet, always 548 bytes long.
///
/// | byte | width | field                                                    | in a new message |
/// |-----:|------:|----------------------------------------------------------|------------------|
/// |    0 |     1 | op: 1 request, 2 reply                                   | 0                |
/// |    1 |     1 | htype                                                    | 1: Ethernet      |
/// |    2 |     1 | hlen                                                     | 6                |
/// |    3 |     1 | hops                                                     | 0                |
/// |    4 |     4 | xid, never swapped: a number as it lies in memory        | 0                |
/// |    8 |     2 | secs                                                     | 0                |
/// |   10 |     2 | flags: 0x8000 asks for an answer by broadcast            | 0                |
/// |   12 |     4 | ciaddr: address that the client has                      | 0                |
/// |   16 |     4 | yiaddr: address that the client gets                     | 0                |
/// |   20 |     4 | siaddr                                                   | 0                |
/// |   24 |     4 | giaddr: address of a relay                               | 0                |
/// |   28 |    16 | chaddr: hardware address of the client                   | 0                |
/// |   44 |    64 | sname                                                    | 0                |
/// |  108 |   128 | file                                                     | 0                |
/// |  236 |     4 | magic cookie                                             | 63 82 53 63      |
/// |  240 |   308 | options (RFC 2132): code, length, value; 0 pads, 255 ends | 0                |
///
/// Numbers but xid in network byte order. Options stand in the message only once serialize() has run. Those
/// in sname and file are not looked for. Never throws. [one thread at a time, serialize() too]
class DhcpPacket : public ApplicationPacket {
public:
    static constexpr quint32 messageSizeBytes = 548;
    static constexpr quint16 ServerPort = 67;
    static constexpr quint16 ClientPort = 68;
    static constexpr quint32 defaultLeaseTimeSeconds = 3600;

    /// Not valid before setRequest().
    DhcpPacket();
    /// Parses the first 548 bytes, filled up with zeros. Options are read until the code 255 or one that
    /// doesn't fit the area; none if the area starts with a pad. Of a code that comes twice the last one
    /// counts.
    explicit DhcpPacket(const QByteArray& bytes);
    explicit DhcpPacket(ByteSlice&& bytes);
    DhcpPacket(const DhcpPacket& other);
    /// @param other is a DhcpPacket; another class gives a new message.
    explicit DhcpPacket(const ApplicationPacket& other);
    DhcpPacket& operator=(const DhcpPacket&) = delete;
    ~DhcpPacket() override;

    /// 548.
    quint32 headerSize() const override;
    /// 0.
    quint32 payloadSize() const override;
    /// View of the 548 bytes of the message with its options written anew, good while the packet lives; it
    /// shows later changes. Empty if the message is not valid. The message type comes first, the other
    /// options in ascending order; an option that doesn't fit is left out, an empty value is its code alone.
    /// What stood behind the end of the options stays.
    QByteArray serialize() const override;

    /// True if op, htype, hlen and the magic cookie are those of a DHCP message on Ethernet.
    bool isValid() const;
    bool isRequest() const;
    void setRequest(bool request);
    IpAddress yiaddr() const;
    void setYiaddr(const IpAddress& address);
    IpAddress ciaddr() const;
    void setCiaddr(const IpAddress& address);
    IpAddress giaddr() const;
    quint32 xid() const;
    void setXid(quint32 xid);
    /// In host byte order.
    quint16 flags() const;
    void setFlags(quint16 flags);
    /// View of the 16 bytes, good while the packet lives; it shows later changes.
    QByteArray chaddr() const;
    /// @param bytes at most 16, filled up with zeros.
    void setChaddr(const QByteArray& bytes);

    bool hasOption(quint8 code) const;
    /// Value without code and length; empty if there is no such option.
    QByteArray option(quint8 code) const;
    /// @param value is shared; memory that it only views must stay good.
    /// @returns false, and nothing is changed, for a value of more than 255 bytes.
    bool setOption(quint8 code, const QByteArray& value);
    /// In ascending order.
    QList<quint8> optionCodes() const;

    /// True for the two ports of DHCP, in either direction.
    static bool isDhcpPorts(quint16 sourcePort, quint16 destinationPort);

    /// A client's first message. The caller owns the new packet, here and below.
    [[nodiscard]] static DhcpPacket* discover(const MacAddress& client, quint32 xid);
    /// Takes this offer.
    [[nodiscard]] DhcpPacket* request(quint32 xid) const;
    /// Prolongs the lease that this acknowledge gave.
    [[nodiscard]] DhcpPacket* renew(quint32 xid) const;
    /// Tells the server of this message that its address is in use.
    [[nodiscard]] DhcpPacket* decline(quint32 xid) const;
    /// The server's answer to this message of a client.
    /// @param broadcast tells whether the answer goes out by broadcast: always to a client on the server's
    /// own network, through a relay if the client asked for it. May be null.
    /// @returns an offer to a discover, an acknowledge to a request; null, with @p broadcast unchanged, if
    /// this is neither.
    [[nodiscard]] DhcpPacket* reply(const IpAddress& clientAddress, const IpAddress& serverAddress,
                                    bool* broadcast,
                                    quint32 leaseTimeSeconds = defaultLeaseTimeSeconds) const;

private:
    struct D;
    PlacedRecord<D, 592> d;
};
