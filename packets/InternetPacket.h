#pragma once

#include "packets/NetworkPacket.h"

#include <QByteArray>

class ByteSlice;
class IpAddress;
struct FrameRoom;

/// Network layer packet: the common face of IPv4Packet and ArpPacket towards EthernetFrame.
class InternetPacket : public NetworkPacket {
public:
    /// 3.
    quint32 layer() const override;
    /// The whole packet as it stands behind the frame's header.
    virtual QByteArray serialize() const = 0;
    /// The EtherType of the class, in host byte order.
    virtual quint16 etherType() const = 0;
    /// IP protocol number of the next layer.
    virtual quint8 protocol() const = 0;
    /// The bytes behind the header.
    virtual QByteArray payload() const = 0;
    virtual const IpAddress& sourceAddress() const = 0;
    virtual const IpAddress& destinationAddress() const = 0;
    /// Length word of the header as last written, in network byte order; 0 in a class without one.
    virtual quint16 lengthField() const;

    /// @param etherType in host byte order.
    /// @returns a new packet parsed from @p bytes, which the caller owns; null for a type other than IPv4 and
    /// ARP.
    [[nodiscard]] static InternetPacket* create(const quint16& etherType, const QByteArray& bytes);
    /// The same from a part of an array that is given up, without a copy of it.
    [[nodiscard]] static InternetPacket* create(const quint16& etherType, ByteSlice&& bytes);
    /// @returns a copy of @p packet by the rule of its class, which the caller owns; null for a class other
    /// than IPv4Packet and ArpPacket.
    [[nodiscard]] static InternetPacket* copyOf(const InternetPacket& packet);

protected:
    InternetPacket() = default;

private:
    friend class EthernetFrame;

    /// @returns the bytes of serialize() of @p packet in a new array with @p room.
    static QByteArray serializeIn(const FrameRoom& room, const InternetPacket& packet);
};
