#pragma once

#include "packets/PlacedRecord.h"
#include "packets/TransportPacket.h"

/// ICMP message (RFC 792).
///
/// | byte | width | field                                                                          |
/// |-----:|------:|--------------------------------------------------------------------------------|
/// |    0 |     1 | type                                                                           |
/// |    1 |     1 | code                                                                           |
/// |    2 |     2 | checksum                                                                       |
/// |    4 |     n | data: all the rest, with the identifier and sequence number of an echo message |
///
/// Numbers in network byte order. Any bytes are a message: what is missing reads 0. Never throws.
/// [one thread at a time, serialize() and payload() too]
class IcmpPacket : public TransportPacket {
public:
    static constexpr quint8 Protocol = 1;

    /// A message whose checksum serialize() computes.
    IcmpPacket(quint8 type, quint8 code, const QByteArray& data);
    /// Parses @p bytes to their end. The checksum is kept and goes out again as it came, right or wrong.
    explicit IcmpPacket(const QByteArray& bytes);
    explicit IcmpPacket(ByteSlice&& bytes);
    IcmpPacket(const IcmpPacket& other);
    /// @param other is an IcmpPacket; another class gives the message 0, 0 without data.
    explicit IcmpPacket(const TransportPacket& other);
    IcmpPacket& operator=(const IcmpPacket&) = delete;
    ~IcmpPacket() override;

    /// 4.
    quint32 headerSize() const override;
    quint32 payloadSize() const override;
    /// The addresses play no part.
    QByteArray serialize(const IpAddress& source, const IpAddress& destination) const override;
    /// As totalSize().
    quint32 length() const override;
    /// True.
    bool isValid() const override;
    /// "ICMP".
    QByteArray protocolName() const override;
    /// 1.
    quint8 protocol() const override;
    const QByteArray& payload() const override;

    quint8 type() const;
    quint8 code() const;
    /// In host byte order: as received, or as computed by serialize(), 0 before.
    quint16 checksum() const;
    /// @returns the reply to an echo request, with the same data, which the caller owns; null for any other
    /// message.
    [[nodiscard]] IcmpPacket* echoReply() const;

private:
    struct D;
    PlacedRecord<D, 32> d;
};
