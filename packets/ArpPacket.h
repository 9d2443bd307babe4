#pragma once

#include "packets/InternetPacket.h"
#include "packets/PlacedRecord.h"

class MacAddress;

/// ARP message (RFC 826) for Ethernet and IPv4.
///
/// | byte | width | field                                       |
/// |-----:|------:|---------------------------------------------|
/// |    0 |     2 | hardware type: 1, Ethernet                  |
/// |    2 |     2 | protocol type: 0x0800, IPv4                 |
/// |    4 |     1 | size of a hardware address: 6               |
/// |    5 |     1 | size of a protocol address: 4               |
/// |    6 |     2 | operation: 1 request, 2 reply               |
/// |    8 |     6 | sender hardware address                     |
/// |   14 |     4 | sender protocol address                     |
/// |   18 |     6 | target hardware address                     |
/// |   24 |     4 | target protocol address                     |
///
/// Numbers in network byte order. A received message that is shorter or has other values in the first five
/// fields is not valid: operation and addresses read 0. Never throws. [one thread at a time]
class ArpPacket : public InternetPacket {
public:
    static constexpr quint16 EtherType = 0x0806;

    /// Operation 0, all addresses 0.
    ArpPacket();
    /// Parses the first 28 bytes; what stands behind them is ignored.
    explicit ArpPacket(const QByteArray& bytes);
    explicit ArpPacket(const ByteSlice& bytes);
    ArpPacket(const ArpPacket& other);
    /// @param other is an ArpPacket; another class gives a default message.
    explicit ArpPacket(const InternetPacket& other);
    ArpPacket& operator=(const ArpPacket&) = delete;
    ~ArpPacket() override;

    /// 8: the fields in front of the addresses.
    quint32 headerSize() const override;
    /// 0.
    quint32 payloadSize() const override;
    /// As the address sizes in the message say, 28 for a valid one.
    quint32 totalSize() const override;
    /// View of the 28 bytes of the message, also of one that is not valid (filled up with zeros); good while
    /// the packet lives.
    QByteArray serialize() const override;
    /// 0x0806.
    quint16 etherType() const override;
    /// 0.
    quint8 protocol() const override;
    /// Empty.
    QByteArray payload() const override;
    /// Sender protocol address.
    const IpAddress& sourceAddress() const override;
    /// Target protocol address.
    const IpAddress& destinationAddress() const override;

    /// In host byte order; 0 if the message is not valid.
    quint16 operation() const;
    quint8 hardwareAddressSize() const;
    quint8 protocolAddressSize() const;
    const MacAddress& senderMacAddress() const;
    const MacAddress& targetMacAddress() const;

    /// Asks who has @p targetIp. The caller owns the new packet, here and below.
    [[nodiscard]] static ArpPacket* request(const IpAddress& senderIp, const MacAddress& senderMac,
                                            const IpAddress& targetIp);
    /// Asks whether @p targetIp is in use, without a sender protocol address (RFC 5227).
    [[nodiscard]] static ArpPacket* probe(const IpAddress& targetIp, const MacAddress& senderMac);
    /// Tells everybody that @p ownIp is in use now (RFC 5227).
    [[nodiscard]] static ArpPacket* announcement(const IpAddress& ownIp, const MacAddress& ownMac);
    /// @returns the answer to this request, whoever it asked for; null if this isn't a valid request.
    [[nodiscard]] ArpPacket* reply(const IpAddress& ownIp, const MacAddress& ownMac) const;

private:
    struct D;
    PlacedRecord<D, 52> d;
};
