#pragma once

#include "packets/InternetPacket.h"
#include "packets/PlacedRecord.h"

class TransportPacket;
struct FrameRoom;

/// IPv4 datagram (RFC 791). Of a parsed one addresses, protocol number and payload are kept; each
/// serialisation writes a new header, whose other fields have the values of the last column.
///
/// | byte | width | field                                    | written            |
/// |-----:|------:|------------------------------------------|--------------------|
/// |    0 |     1 | version and header size in 32-bit words  | 0x45               |
/// |    1 |     1 | type of service                          | 0                  |
/// |    2 |     2 | total length                             |                    |
/// |    4 |     2 | identification                           | 0                  |
/// |    6 |     2 | flags and fragment offset                | 0x4000: don't fragment |
/// |    8 |     1 | time to live                             | 255                |
/// |    9 |     1 | protocol number                          |                    |
/// |   10 |     2 | header checksum                          | computed           |
/// |   12 |     4 | source address                           |                    |
/// |   16 |     4 | destination address                      |                    |
/// |   20 |     n | options, up to the header size           | none               |
/// |      |     n | payload                                  |                    |
///
/// Numbers in network byte order. A packet is child-backed or data-backed for life. Never throws. [one thread
/// at a time, serialize() and payload() too]
class IPv4Packet : public InternetPacket {
public:
    static constexpr quint16 EtherType = 0x0800;

    /// Child-backed packet.
    /// @param child stays the caller's and must outlive this packet; later changes of it show in the packet.
    IPv4Packet(const IpAddress& source, const IpAddress& destination, TransportPacket* child);
    /// Data-backed packet. With TransportPacket::noProtocol it serialises to its data alone.
    IPv4Packet(const IpAddress& source, const IpAddress& destination, quint8 protocol,
               const QByteArray& data);
    /// Data-backed packet, parsed. Fields behind the end read 0; bytes behind the total length (padding, a
    /// frame check sequence) are dropped, options skipped. A total length below the header size stands for
    /// all the bytes, a header size below 20 for none. Version, checksum and fragment fields are not looked
    /// at.
    explicit IPv4Packet(const QByteArray& bytes);
    explicit IPv4Packet(ByteSlice&& bytes);
    /// The copy shares the child, which neither owns.
    IPv4Packet(const IPv4Packet& other);
    /// @param other is an IPv4Packet; another class gives an empty packet without addresses.
    explicit IPv4Packet(const InternetPacket& other);
    IPv4Packet& operator=(const IPv4Packet&) = delete;
    ~IPv4Packet() override;

    /// 20, in a parsed packet as read, 0 to 60.
    quint32 headerSize() const override;
    /// Of a packet that was cut short: what is there.
    quint32 payloadSize() const override;
    /// Of a parsed packet the total length as read.
    quint32 totalSize() const override;
    /// A new array: header, and payload.
    QByteArray serialize() const override;
    /// 0x0800.
    quint16 etherType() const override;
    quint8 protocol() const override;
    QByteArray payload() const override;
    const IpAddress& sourceAddress() const override;
    const IpAddress& destinationAddress() const override;
    /// Total length of the header as last written, in network byte order; 0 before the first serialize().
    quint16 lengthField() const override;

    /// @returns a new packet parsed from the payload, which the caller owns, also of a child-backed packet;
    /// null for a protocol that has no class.
    [[nodiscard]] TransportPacket* transportPacket() const;
    /// @returns a new data-backed packet parsed from the bytes of serialize(), which the caller owns.
    [[nodiscard]] IPv4Packet* clone() const;

private:
    friend class InternetPacket;

    /// The bytes of serialize() in a new array with @p room, without a copy of them in between.
    QByteArray serializeIn(const FrameRoom& room) const;

    struct D;
    PlacedRecord<D, 64> d;
};
