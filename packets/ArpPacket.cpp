#include "packets/ArpPacket.h"

#include "packets/ByteSlice.h"
#include "packets/IPv4Packet.h"
#include "packets/IpAddress.h"
#include "packets/MacAddress.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

namespace {
constexpr int ipAddressBytes = 4;
constexpr int hardwareTypeAt = 0, protocolTypeAt = hardwareTypeAt + 2, hardwareSizeAt = protocolTypeAt + 2,
              protocolSizeAt = hardwareSizeAt + 1, operationAt = protocolSizeAt + 1,
              senderMacAt = operationAt + 2, senderIpAt = senderMacAt + MacAddress::sizeBytes,
              targetMacAt = senderIpAt + ipAddressBytes, targetIpAt = targetMacAt + MacAddress::sizeBytes,
              messageSizeBytes = targetIpAt + ipAddressBytes;
static_assert(messageSizeBytes == 28, "RFC 826 with the address sizes of Ethernet and IPv4");

constexpr quint16 ethernetHardware = 1;
constexpr quint16 requestOperation = 1, replyOperation = 2;
} // namespace

struct ArpPacket::D {
    std::array<char, messageSizeBytes> image{};
    bool valid = true;
    IpAddress senderIp;
    IpAddress targetIp;
    MacAddress senderMac;
    MacAddress targetMac;

    D();

    void parse(const ByteSlice& bytes);
    quint8 byteAt(int at) const { return quint8(image[std::size_t(at)]); }
    quint16 wordAt(int at) const { return qFromBigEndian<quint16>(&image[std::size_t(at)]); }
    bool isWellFormed() const;

    void setOperation(quint16 operation) { qToBigEndian(operation, &image[operationAt]); }
    void setSenderIp(const IpAddress& address) { setIp(senderIp, senderIpAt, address); }
    void setTargetIp(const IpAddress& address) { setIp(targetIp, targetIpAt, address); }
    void setSenderMac(const MacAddress& address) { setMac(senderMac, senderMacAt, address); }
    void setTargetMac(const MacAddress& address) { setMac(targetMac, targetMacAt, address); }

private:
    void setIp(IpAddress& field, int at, const IpAddress& address);
    void setMac(MacAddress& field, int at, const MacAddress& address);
};

ArpPacket::D::D()
{
    qToBigEndian(ethernetHardware, &image[hardwareTypeAt]);
    qToBigEndian(IPv4Packet::EtherType, &image[protocolTypeAt]);
    image[hardwareSizeAt] = char(MacAddress::sizeBytes);
    image[protocolSizeAt] = char(ipAddressBytes);
}

void ArpPacket::D::parse(const ByteSlice& bytes)
{
    const int taken = std::min(bytes.size(), messageSizeBytes);
    image.fill('\0');
    std::memcpy(image.data(), bytes.constData(), std::size_t(taken));
    valid = taken == messageSizeBytes && isWellFormed();
    if (!valid)
        return;
    senderIp = IpAddress(qFromBigEndian<quint32>(&image[senderIpAt]));
    targetIp = IpAddress(qFromBigEndian<quint32>(&image[targetIpAt]));
    senderMac = MacAddress(reinterpret_cast<const quint8*>(&image[senderMacAt]));
    targetMac = MacAddress(reinterpret_cast<const quint8*>(&image[targetMacAt]));
}

bool ArpPacket::D::isWellFormed() const
{
    const quint16 operation = wordAt(operationAt);
    return (operation == requestOperation || operation == replyOperation) &&
           wordAt(hardwareTypeAt) == ethernetHardware && wordAt(protocolTypeAt) == IPv4Packet::EtherType &&
           byteAt(hardwareSizeAt) == MacAddress::sizeBytes && byteAt(protocolSizeAt) == ipAddressBytes;
}

void ArpPacket::D::setIp(IpAddress& field, int at, const IpAddress& address)
{
    field = address;
    qToBigEndian(address.toUInt32(), &image[std::size_t(at)]);
}

void ArpPacket::D::setMac(MacAddress& field, int at, const MacAddress& address)
{
    field = address;
    std::memcpy(&image[std::size_t(at)], address.constData(), MacAddress::sizeBytes);
}

ArpPacket::ArpPacket() = default;

ArpPacket::ArpPacket(const QByteArray& bytes)
    : ArpPacket(ByteSlice(bytes))
{
}

ArpPacket::ArpPacket(const ByteSlice& bytes)
    : ArpPacket()
{
    d->parse(bytes);
}

ArpPacket::ArpPacket(const ArpPacket& other)
    : InternetPacket(other)
    , d(*other.d)
{
}

ArpPacket::ArpPacket(const InternetPacket& other)
    : ArpPacket()
{
    if (const auto* same = dynamic_cast<const ArpPacket*>(&other))
        *d = *same->d;
}

ArpPacket::~ArpPacket() = default;

quint32 ArpPacket::headerSize() const
{
    return senderMacAt;
}

quint32 ArpPacket::payloadSize() const
{
    return 0;
}

quint32 ArpPacket::totalSize() const
{
    return headerSize() + 2U * (hardwareAddressSize() + protocolAddressSize());
}

QByteArray ArpPacket::serialize() const
{
    return QByteArray::fromRawData(d->image.data(), messageSizeBytes);
}

quint16 ArpPacket::etherType() const
{
    return EtherType;
}

quint8 ArpPacket::protocol() const
{
    return 0;
}

QByteArray ArpPacket::payload() const
{
    return {};
}

const IpAddress& ArpPacket::sourceAddress() const
{
    return d->senderIp;
}

const IpAddress& ArpPacket::destinationAddress() const
{
    return d->targetIp;
}

quint16 ArpPacket::operation() const
{
    const D& r = *d;
    return r.valid ? r.wordAt(operationAt) : quint16(0);
}

quint8 ArpPacket::hardwareAddressSize() const
{
    return d->byteAt(hardwareSizeAt);
}

quint8 ArpPacket::protocolAddressSize() const
{
    return d->byteAt(protocolSizeAt);
}

const MacAddress& ArpPacket::senderMacAddress() const
{
    return d->senderMac;
}

const MacAddress& ArpPacket::targetMacAddress() const
{
    return d->targetMac;
}

ArpPacket* ArpPacket::request(const IpAddress& senderIp, const MacAddress& senderMac,
                              const IpAddress& targetIp)
{
    auto packet = std::make_unique<ArpPacket>();
    packet->d->setOperation(requestOperation);
    packet->d->setSenderIp(senderIp);
    packet->d->setSenderMac(senderMac);
    packet->d->setTargetIp(targetIp);
    return packet.release();
}

ArpPacket* ArpPacket::probe(const IpAddress& targetIp, const MacAddress& senderMac)
{
    return request(IpAddress(), senderMac, targetIp);
}

ArpPacket* ArpPacket::announcement(const IpAddress& ownIp, const MacAddress& ownMac)
{
    return request(ownIp, ownMac, ownIp);
}

ArpPacket* ArpPacket::reply(const IpAddress& ownIp, const MacAddress& ownMac) const
{
    if (operation() != requestOperation)
        return nullptr;
    auto packet = std::make_unique<ArpPacket>();
    packet->d->setTargetIp(sourceAddress());
    packet->d->setTargetMac(senderMacAddress());
    packet->d->setOperation(replyOperation);
    packet->d->setSenderIp(ownIp);
    packet->d->setSenderMac(ownMac);
    return packet.release();
}
