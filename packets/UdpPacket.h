#pragma once

#include "packets/PlacedRecord.h"
#include "packets/TransportPacket.h"

class ApplicationPacket;
struct FrameRoom;

/// UDP datagram (RFC 768). The IP addresses are no part of it: the layer above hands them in.
///
/// | byte | width | field                              |
/// |-----:|------:|------------------------------------|
/// |    0 |     2 | source port                        |
/// |    2 |     2 | destination port                   |
/// |    4 |     2 | length of header and payload       |
/// |    6 |     2 | checksum; 0 if it was not computed |
/// |    8 |     n | payload                            |
///
/// Numbers in network byte order. Never throws. [one thread at a time, serialize(), checksum() and payload()
/// too]
class UdpPacket : public TransportPacket {
public:
    static constexpr quint8 Protocol = 17;
    /// Largest payload that fits an IPv4 packet without options.
    static constexpr int payloadSizeMaxBytes = 65507;

    /// @param checksumEnabled false: the checksum field goes out as 0.
    UdpPacket(quint16 sourcePort, quint16 destinationPort, const QByteArray& data, bool checksumEnabled);
    /// Takes the bytes of @p packet once, here; the packet itself is not kept. Where its serialize() gives a
    /// view, as that of a DhcpPacket does, it must live until the last serialize() of this datagram.
    UdpPacket(quint16 sourcePort, quint16 destinationPort, const ApplicationPacket& packet);
    /// Parses @p bytes; missing ones read 0. Bytes behind the length field are dropped; a length below 8
    /// stands for all the bytes. The datagram is valid if its length field is right, whatever its checksum,
    /// which is kept and goes out again as it came until the datagram really changes.
    explicit UdpPacket(const QByteArray& bytes);
    explicit UdpPacket(ByteSlice&& bytes);
    /// The copy has its checksum on, whatever @p other has.
    UdpPacket(const UdpPacket& other);
    /// @param other is a UdpPacket; another class gives an empty datagram between ports 0.
    explicit UdpPacket(const TransportPacket& other);
    UdpPacket& operator=(const UdpPacket&) = delete;
    ~UdpPacket() override;

    /// 8.
    quint32 headerSize() const override;
    quint32 payloadSize() const override;
    /// Header and payload, low 16 bits.
    quint32 totalSize() const override;
    /// A new array.
    QByteArray serialize(const IpAddress& source, const IpAddress& destination) const override;
    /// Header and payload, all bits.
    quint32 length() const override;
    /// False with more than payloadSizeMaxBytes of payload set, or with another size received than the length
    /// field said; serialize() gives nothing then. setData() decides anew.
    bool isValid() const override;
    /// "UDP".
    QByteArray protocolName() const override;
    /// 17.
    quint8 protocol() const override;
    const QByteArray& payload() const override;

    /// Ports in host byte order.
    quint16 sourcePort() const;
    quint16 destinationPort() const;
    /// A port that is there already is no change: a received checksum stays.
    void setSourcePort(quint16 port);
    void setDestinationPort(quint16 port);
    /// Replaces the payload. Always a change, with the same bytes too.
    /// @param data is shared; memory that it only views must outlive the last use of this datagram.
    void setData(const QByteArray& data);

    /// The checksum that serialize() writes, in host byte order: as received, else computed over payload,
    /// ports and the pseudo-header of the addresses and never 0; 0 with the checksum off.
    quint16 checksum(const IpAddress& source, const IpAddress& destination) const;

    /// @returns a new packet parsed from the payload, which the caller owns: a GVCP class if either port is
    /// that of GVCP and the message has a class, a DhcpPacket between the ports of DHCP; else null.
    [[nodiscard]] ApplicationPacket* applicationPacket() const;

private:
    friend class TransportPacket;

    /// The bytes of serialize() in a new array with @p room, without a copy of them in between.
    QByteArray serializeIn(const FrameRoom& room, const IpAddress& source,
                           const IpAddress& destination) const;

    struct D;
    PlacedRecord<D, 40> d;
};
