#include "packets/DhcpPacket.h"

#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"
#include "packets/DhcpOptions.h"
#include "packets/IpAddress.h"
#include "packets/MacAddress.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <utility>

namespace {
constexpr int opAt = 0, htypeAt = opAt + 1, hlenAt = htypeAt + 1, hopsAt = hlenAt + 1, xidAt = hopsAt + 1,
              secsAt = xidAt + 4, flagsAt = secsAt + 2, ciaddrAt = flagsAt + 2, yiaddrAt = ciaddrAt + 4,
              siaddrAt = yiaddrAt + 4, giaddrAt = siaddrAt + 4, chaddrAt = giaddrAt + 4, chaddrSizeBytes = 16,
              snameAt = chaddrAt + chaddrSizeBytes, fileAt = snameAt + 64, magicAt = fileAt + 128,
              optionsAt = magicAt + 4;
static_assert(optionsAt + DhcpOptions::areaSizeBytes == int(DhcpPacket::messageSizeBytes),
              "RFC 2131: fixed part and 312 bytes of options, the magic cookie among them");

constexpr quint8 requestOp = 1, replyOp = 2;
constexpr quint8 ethernetHardware = 1;
constexpr quint32 magicCookie = 0x63825363;
constexpr quint16 broadcastFlag = 0x8000;

constexpr quint8 subnetMaskOption = 1, routerOption = 3, requestedAddressOption = 50, leaseTimeOption = 51,
                 serverIdentifierOption = 54, renewalTimeOption = 58, rebindingTimeOption = 59;

enum MessageType : quint8 { Discover = 1, Offer = 2, Request = 3, Decline = 4, Acknowledge = 5 };

QByteArray networkBytes(quint32 value)
{
    return byteArrayFromUInt32(qToBigEndian(value));
}
} // namespace

struct DhcpPacket::D {
    std::array<char, messageSizeBytes> message;
    DhcpOptions options;

    D();
    explicit D(ByteSlice&& bytes);

    char* at(int place) { return &message[std::size_t(place)]; }
    const char* at(int place) const { return &message[std::size_t(place)]; }
    quint8 byteAt(int place) const { return quint8(*at(place)); }
    IpAddress address(int place) const { return IpAddress(qFromBigEndian<quint32>(at(place))); }
    void setAddress(int place, const IpAddress& address) { qToBigEndian(address.toUInt32(), at(place)); }
    void setMessageType(MessageType type)
    {
        options.set(DhcpOptions::messageTypeCode, byteArrayFromUInt8(type));
    }
    /// What every message of a client has that goes on from @p received, a server's message.
    void setUpAnswer(const D& received, MessageType type, quint32 xid);
};

DhcpPacket::D::D()
    : message{}
{
    message[htypeAt] = char(ethernetHardware);
    message[hlenAt] = char(MacAddress::sizeBytes);
    qToBigEndian(magicCookie, at(magicAt));
}

DhcpPacket::D::D(ByteSlice&& bytes)
{
    const auto taken = std::min(std::size_t(bytes.size()), message.size());
    std::memcpy(message.data(), bytes.constData(), taken);
    std::memset(message.data() + taken, 0, message.size() - taken);
    bytes.narrow(optionsAt, DhcpOptions::areaSizeBytes);
    options.read(at(optionsAt), std::move(bytes));
}

void DhcpPacket::D::setUpAnswer(const D& received, MessageType type, quint32 xid)
{
    message[opAt] = char(requestOp);
    std::memcpy(at(chaddrAt), received.at(chaddrAt), chaddrSizeBytes);
    options.set(requestedAddressOption, networkBytes(received.address(yiaddrAt).toUInt32()));
    std::memcpy(at(xidAt), &xid, sizeof(xid));
    setMessageType(type);
}

DhcpPacket::DhcpPacket() = default;

DhcpPacket::DhcpPacket(const QByteArray& bytes)
    : DhcpPacket(ByteSlice(bytes))
{
}

DhcpPacket::DhcpPacket(ByteSlice&& bytes)
    : d(std::move(bytes))
{
}

DhcpPacket::DhcpPacket(const DhcpPacket& other)
    : ApplicationPacket(other)
    , d(*other.d)
{
}

DhcpPacket::DhcpPacket(const ApplicationPacket& other)
    : DhcpPacket()
{
    if (const auto* same = dynamic_cast<const DhcpPacket*>(&other))
        *d = *same->d;
}

DhcpPacket::~DhcpPacket() = default;

quint32 DhcpPacket::headerSize() const
{
    return messageSizeBytes;
}

quint32 DhcpPacket::payloadSize() const
{
    return 0;
}

QByteArray DhcpPacket::serialize() const
{
    if (!isValid())
        return {};
    d->options.write(d->at(optionsAt));
    return QByteArray::fromRawData(d->message.data(), int(messageSizeBytes));
}

bool DhcpPacket::isValid() const
{
    const D& r = *d;
    const quint8 op = r.byteAt(opAt);
    return (op == requestOp || op == replyOp) && r.byteAt(htypeAt) == ethernetHardware &&
           r.byteAt(hlenAt) == MacAddress::sizeBytes && qFromBigEndian<quint32>(r.at(magicAt)) == magicCookie;
}

bool DhcpPacket::isRequest() const
{
    return d->byteAt(opAt) == requestOp;
}

void DhcpPacket::setRequest(bool request)
{
    d->message[opAt] = char(request ? requestOp : replyOp);
}

IpAddress DhcpPacket::yiaddr() const
{
    return d->address(yiaddrAt);
}

void DhcpPacket::setYiaddr(const IpAddress& address)
{
    d->setAddress(yiaddrAt, address);
}

IpAddress DhcpPacket::ciaddr() const
{
    return d->address(ciaddrAt);
}

void DhcpPacket::setCiaddr(const IpAddress& address)
{
    d->setAddress(ciaddrAt, address);
}

IpAddress DhcpPacket::giaddr() const
{
    return d->address(giaddrAt);
}

quint32 DhcpPacket::xid() const
{
    return readMemory<quint32>(d->at(xidAt), int(sizeof(quint32)));
}

void DhcpPacket::setXid(quint32 xid)
{
    std::memcpy(d->at(xidAt), &xid, sizeof(xid));
}

quint16 DhcpPacket::flags() const
{
    return qFromBigEndian<quint16>(d->at(flagsAt));
}

void DhcpPacket::setFlags(quint16 flags)
{
    qToBigEndian(flags, d->at(flagsAt));
}

QByteArray DhcpPacket::chaddr() const
{
    return QByteArray::fromRawData(d->at(chaddrAt), chaddrSizeBytes);
}

void DhcpPacket::setChaddr(const QByteArray& bytes)
{
    const int taken = std::min(bytes.size(), chaddrSizeBytes);
    // The bytes may be a view of this very field.
    std::memmove(d->at(chaddrAt), bytes.constData(), std::size_t(taken));
    std::memset(d->at(chaddrAt) + taken, 0, std::size_t(chaddrSizeBytes - taken));
}

bool DhcpPacket::hasOption(quint8 code) const
{
    return d->options.has(code);
}

QByteArray DhcpPacket::option(quint8 code) const
{
    return d->options.value(code);
}

bool DhcpPacket::setOption(quint8 code, const QByteArray& value)
{
    if (value.size() > DhcpOptions::valueSizeMaxBytes)
        return false;
    d->options.set(code, value);
    return true;
}

QList<quint8> DhcpPacket::optionCodes() const
{
    return d->options.codes();
}

bool DhcpPacket::isDhcpPorts(quint16 sourcePort, quint16 destinationPort)
{
    return (sourcePort == ServerPort && destinationPort == ClientPort) ||
           (sourcePort == ClientPort && destinationPort == ServerPort);
}

DhcpPacket* DhcpPacket::discover(const MacAddress& client, quint32 xid)
{
    auto packet = std::make_unique<DhcpPacket>();
    packet->setRequest(true);
    packet->setChaddr(client.rawBytes());
    packet->setXid(xid);
    packet->d->setMessageType(Discover);
    for (const quint8 code : {subnetMaskOption, routerOption, renewalTimeOption, rebindingTimeOption})
        packet->setOption(code, networkBytes(0));
    return packet.release();
}

DhcpPacket* DhcpPacket::request(quint32 xid) const
{
    auto packet = std::make_unique<DhcpPacket>();
    packet->setOption(serverIdentifierOption, option(serverIdentifierOption));
    packet->d->setUpAnswer(*d, Request, xid);
    return packet.release();
}

DhcpPacket* DhcpPacket::renew(quint32 xid) const
{
    auto packet = std::make_unique<DhcpPacket>();
    packet->d->setUpAnswer(*d, Request, xid);
    packet->setCiaddr(yiaddr());
    return packet.release();
}

DhcpPacket* DhcpPacket::decline(quint32 xid) const
{
    std::unique_ptr<DhcpPacket> packet(request(xid));
    packet->d->setMessageType(Decline);
    return packet.release();
}

DhcpPacket* DhcpPacket::reply(const IpAddress& clientAddress, const IpAddress& serverAddress, bool* broadcast,
                              quint32 leaseTimeSeconds) const
{
    if (!isValid() || !isRequest())
        return nullptr;
    const QByteArray type = option(DhcpOptions::messageTypeCode);
    if (type.size() != 1 || (type[0] != char(Discover) && type[0] != char(Request)))
        return nullptr;
    const bool acknowledges = type[0] == char(Request);
    auto packet = std::make_unique<DhcpPacket>();
    packet->setRequest(false);
    packet->setYiaddr(clientAddress);
    packet->setXid(xid());
    packet->d->setMessageType(acknowledges ? Acknowledge : Offer);
    packet->setOption(serverIdentifierOption, networkBytes(serverAddress.toUInt32()));
    packet->setOption(leaseTimeOption, networkBytes(leaseTimeSeconds));
    if (acknowledges)
        packet->setCiaddr(ciaddr());
    packet->setChaddr(chaddr());
    packet->setFlags(flags());
    if (broadcast != nullptr)
        *broadcast = giaddr() == IpAddress() || (flags() & broadcastFlag) != 0;
    return packet.release();
}
