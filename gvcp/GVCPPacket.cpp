#include "gvcp/GVCPPacket_p.h"

#include "gvcp/GVCPAckPacket.h"
#include "gvcp/GVCPActionCommandPacket.h"
#include "gvcp/GVCPCommandPacket.h"
#include "gvcp/GVCPDiscoveryAckPacket.h"
#include "gvcp/GVCPRegisterReadCommandPacket.h"
#include "gvcp/GVCPRegisterWriteCommandPacket.h"
#include "packets/ByteArrayHelpers.h"

namespace {
// The acknowledge of each command has the code behind that of the command.
enum MessageCode : quint16 {
    DiscoveryCommand = 0x0002,
    DiscoveryAck,
    ForceIpCommand = 0x0004,
    ForceIpAck,
    PacketResendCommand = 0x0040,
    PacketResendAck,
    ReadRegisterCommand = 0x0080,
    ReadRegisterAck,
    WriteRegisterCommand = 0x0082,
    WriteRegisterAck,
    ReadMemoryCommand = 0x0084,
    ReadMemoryAck,
    WriteMemoryCommand = 0x0086,
    WriteMemoryAck,
    EventCommand = 0x00c0,
    EventAck,
    EventDataCommand = 0x00c2,
    EventDataAck,
    ActionCommand = 0x0100,
    ActionAck,
};
} // namespace

bool GVCPPacket::D::isLengthRight(const ByteSlice& bytes)
{
    return int(readField<quint16>(bytes, lengthAt)) == bytes.size() - payloadAt;
}

void GVCPPacket::D::parse(const ByteSlice& bytes)
{
    code = readField<quint16>(bytes, codeAt);
    requestId = readField<quint16>(bytes, idAt);
    payload = bytes.mid(payloadAt);
    valid = requestId != 0;
}

bool GVCPPacket::D::isSendable() const
{
    return requestId != 0 && payload.size() < payloadSizeMaxBytes;
}

QByteArray GVCPPacket::D::message(quint16 firstWord, quint16 length) const
{
    QByteArray message(payloadAt + payload.size(), Qt::Uninitialized);
    writeHeader(message.data(), firstWord, length);
    std::memcpy(message.data() + payloadAt, payload.constData(), std::size_t(payload.size()));
    return message;
}

void GVCPPacket::D::writeHeader(char* to, quint16 firstWord, quint16 length) const
{
    qToBigEndian(firstWord, to + statusAt);
    qToBigEndian(code, to + codeAt);
    qToBigEndian(length, to + lengthAt);
    qToBigEndian(requestId, to + idAt);
}

GVCPPacket* GVCPPacket::create(const QByteArray& bytes)
{
    return create(ByteSlice(bytes));
}

GVCPPacket* GVCPPacket::create(const ByteSlice& bytes)
{
    if (bytes.size() < int(HeaderSize))
        return nullptr;
    switch (readField<quint16>(bytes, D::codeAt)) {
    case DiscoveryAck:
        return new GVCPDiscoveryAckPacket(bytes);
    case ReadRegisterCommand:
        return new GVCPRegisterReadCommandPacket(bytes);
    case WriteRegisterCommand:
        return new GVCPRegisterWriteCommandPacket(bytes);
    case ActionCommand:
        return new GVCPActionCommandPacket(bytes);
    case DiscoveryCommand:
    case ForceIpCommand:
    case PacketResendCommand:
    case ReadMemoryCommand:
    case WriteMemoryCommand:
    case EventCommand:
    case EventDataCommand:
        return new GVCPCommandPacket(bytes);
    case ForceIpAck:
    case PacketResendAck:
    case ReadRegisterAck:
    case WriteRegisterAck:
    case ReadMemoryAck:
    case WriteMemoryAck:
    case EventAck:
    case EventDataAck:
    case ActionAck:
        return new GVCPAckPacket(bytes);
    default:
        return nullptr;
    }
}

GVCPPacket::GVCPPacket()
    : d(std::make_unique<D>())
{
}

GVCPPacket::~GVCPPacket() = default;

quint32 GVCPPacket::headerSize() const
{
    return HeaderSize;
}

quint32 GVCPPacket::payloadSize() const
{
    return quint32(d->payload.size());
}

QByteArray GVCPPacket::payload() const
{
    return d->payload.array();
}

bool GVCPPacket::isPayloadValid(const QByteArray& bytes) const
{
    return bytes.size() <= payloadSizeMaxBytes;
}

quint16 GVCPPacket::requestId() const
{
    return d->requestId;
}

void GVCPPacket::setRequestId(quint16 id)
{
    d->requestId = id;
    d->valid = id != 0;
}

bool GVCPPacket::isValid() const
{
    return d->valid;
}

quint16 GVCPPacket::payloadLength() const
{
    return quint16(d->payload.size());
}

void GVCPPacket::setPayload(const QByteArray& bytes, ByteOrder byteOrder)
{
    d->payload = ByteSlice();
    d->valid = isPayloadValid(bytes);
    if (!d->valid)
        return;
    d->payload = ByteSlice(byteOrder == HostOrder ? byteArrayToNetworkWords(bytes) : bytes);
    d->valid = d->requestId != 0;
}

const ByteSlice& GVCPPacket::payloadBytes() const
{
    return d->payload;
}
