#pragma once

#include "packets/NetworkPacket.h"

#include <QByteArray>

class ByteSlice;
class IpAddress;
struct FrameRoom;

/// Transport layer packet: what an IPv4Packet carries.
class TransportPacket : public NetworkPacket {
public:
    /// Protocol number of the class itself; it stands for no protocol.
    static constexpr quint8 noProtocol = 255;

    /// 4.
    quint32 layer() const override;
    /// The whole packet; an empty array while isValid() is false. @p source and @p destination are the
    /// addresses of the enclosing IPv4 packet, for a checksum that covers them.
    virtual QByteArray serialize(const IpAddress& source, const IpAddress& destination) const = 0;
    /// Size in bytes that the enclosing IPv4 header counts for this packet.
    virtual quint32 length() const = 0;
    /// True if serialize() gives a message.
    virtual bool isValid() const = 0;
    /// Name of the protocol in capitals.
    virtual QByteArray protocolName() const = 0;
    /// IP protocol number.
    virtual quint8 protocol() const = 0;
    /// The bytes behind the header; the reference is good while the packet lives.
    virtual const QByteArray& payload() const = 0;

    /// @returns a new packet parsed from @p bytes, which the caller owns; null for a protocol that has no
    /// class.
    [[nodiscard]] static TransportPacket* create(const quint8& protocol, const QByteArray& bytes);
    /// The same from a part of an array that is given up, without a copy of it.
    [[nodiscard]] static TransportPacket* create(const quint8& protocol, ByteSlice&& bytes);
    /// @returns a copy of @p packet by the rule of its class, which the caller owns; null for a protocol that
    /// has no class.
    [[nodiscard]] static TransportPacket* copyOf(const TransportPacket& packet);

protected:
    TransportPacket() = default;

private:
    friend class IPv4Packet;

    /// @returns the bytes of serialize() of @p packet in a new array with @p room.
    static QByteArray serializeIn(const FrameRoom& room, const TransportPacket& packet,
                                  const IpAddress& source, const IpAddress& destination);
};
