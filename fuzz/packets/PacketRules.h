#pragma once

#include "fuzz/Check.h"
#include "packets/ArpPacket.h"
#include "packets/DhcpPacket.h"
#include "packets/IPv4Packet.h"
#include "packets/IcmpPacket.h"
#include "packets/UdpPacket.h"

// What holds between a packet, the bytes that it was parsed from, and what is built of it.

inline QByteArray filledUp(const QByteArray& bytes, int size)
{
    return bytes.left(size).leftJustified(size, '\0');
}

/// One's complement sum of words: 0xffff over all that holds a checksum of its own.
inline quint16 sumOf(const QByteArray& bytes)
{
    quint64 sum = 0;
    int weight = 0x100;
    for (const char byte : bytes) {
        sum += quint64(quint8(byte) * weight);
        weight ^= 0x101;
    }
    return quint16(sum == 0 ? 0 : (sum - 1) % 0xffff + 1);
}

inline void checkRules(const IPv4Packet& packet, const QByteArray& bytes)
{
    const int headerSize = int(packet.headerSize()), toEnd = int(packet.totalSize()) - headerSize;
    const QByteArray payload = packet.payload(), written = packet.serialize();
    require(payload == (headerSize < 20 ? QByteArray() : bytes.mid(headerSize, toEnd)),
            "payload by total length");
    const std::unique_ptr<TransportPacket> transport(packet.transportPacket());
    require((transport != nullptr) == (packet.protocol() == 1 || packet.protocol() == 17), "who has a class");
    if (packet.protocol() == 255)
        return require(written == payload, "no protocol, no header");
    require(written.mid(20) == payload && word(written, 2) == quint16(written.size()),
            "the payload survives");
    require(sumOf(written.left(20)) == 0xffff, "a header has its checksum");
    require(bytes.size() < 20 || (written[9] == bytes[9] && written.mid(12, 8) == bytes.mid(12, 8)),
            "protocol and addresses survive");
    const std::unique_ptr<IPv4Packet> clone(packet.clone());
    const IPv4Packet built(packet.sourceAddress(), packet.destinationAddress(), packet.protocol(), payload);
    require(written.size() > 0xffff || told(*clone) == told(built), "a clone is what was built of the same");
}

inline void checkRules(const ArpPacket& packet, const QByteArray& bytes)
{
    const QByteArray image = filledUp(bytes, 28);
    const quint16 operation = word(image, 6);
    const bool valid = bytes.size() >= 28 && bytes.startsWith(QByteArray::fromHex("000108000604")) &&
                       (operation == 1 || operation == 2);
    require(packet.serialize() == image, "a message goes as it came");
    require(packet.operation() == (valid ? operation : 0), "a message of another form has no operation");
    const std::unique_ptr<ArpPacket> reply(packet.reply(packet.sourceAddress(), packet.senderMacAddress()));
    require((reply != nullptr) == (packet.operation() == 1), "a request alone has a reply");
    require(reply == nullptr || reply->serialize().mid(8) == image.mid(8, 10) + image.mid(8, 10),
            "to its sender");
}

inline void checkRules(const IcmpPacket& packet, const QByteArray& bytes)
{
    require(bytesOf(packet) == filledUp(bytes, std::max(bytes.size(), 4)), "a message goes as it came");
    const IcmpPacket built(packet.type(), packet.code(), packet.payload());
    require(sumOf(bytesOf(built)) == 0xffff, "a built message has its checksum");
    requireSame(told(built), told(IcmpPacket(bytesOf(built))), "it is read as it was built");
    const std::unique_ptr<IcmpPacket> reply(packet.echoReply());
    require((reply != nullptr) == (packet.type() == 8 && packet.code() == 0), "an echo request has a reply");
}

inline void checkRules(const UdpPacket& packet, const QByteArray& bytes)
{
    const int length = word(filledUp(bytes, 8), 4);
    require(packet.payload() == bytes.mid(8, length - 8), "the payload goes to the declared length");
    require(packet.isValid() == (length == 8 + packet.payload().size()), "a valid datagram is all there");
    require(bytesOf(packet) == (packet.isValid() ? filledUp(bytes, length) : QByteArray()),
            "it goes as it came");

    const UdpPacket built(packet.sourcePort(), quint16(packet.destinationPort() ^ 1), packet.payload(), true);
    QByteArray summed(12, '\0'); // the pseudo-header: addresses, protocol, length
    qToBigEndian(checkSource.toUInt32(), summed.data());
    qToBigEndian(checkDestination.toUInt32(), summed.data() + 4);
    qToBigEndian(quint32(17 << 16) + built.length(), summed.data() + 8);
    summed += bytesOf(built);
    require(sumOf(summed) == 0xffff || !built.isValid(), "a built datagram has its checksum");
    UdpPacket changed(packet);
    changed.setSourcePort(packet.sourcePort());
    requireSame(told(changed), told(packet), "the port that is there is no change");
    changed.setDestinationPort(built.destinationPort());
    changed.setData(changed.payload());
    requireSame(told(changed), told(built), "a changed datagram is a built one");
}

inline void checkRules(const DhcpPacket& packet, const QByteArray& bytes)
{
    const QByteArray written = packet.serialize(), type = packet.option(53);
    require(written.left(240) == (packet.isValid() ? filledUp(bytes, 240) : QByteArray()),
            "it goes as it came");
    const std::unique_ptr<DhcpPacket> reply(packet.reply({}, {}, nullptr));
    require((reply != nullptr) == (packet.isValid() && packet.isRequest() && (type == "\1" || type == "\3")),
            "a discover and a request have a reply");
    const std::unique_ptr<DhcpPacket> request(packet.request(packet.xid()));
    require(request->chaddr() == packet.chaddr() && request->option(54) == packet.option(54), "it is taken");
}
