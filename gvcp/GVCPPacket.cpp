#include "gvcp/GVCPPacket_p.h"

#include "gvcp/GVCPAckPacket.h"
#include "gvcp/GVCPActionCommandPacket.h"
#include "gvcp/GVCPCommandPacket.h"
#include "gvcp/GVCPDiscoveryAckPacket.h"
#include "gvcp/GVCPMessageCode.h"
#include "gvcp/GVCPRegisterReadCommandPacket.h"
#include "gvcp/GVCPRegisterWriteCommandPacket.h"

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

GVCPPacket* GVCPPacket::create(ByteSlice&& bytes)
{
    if (bytes.size() < int(HeaderSize))
        return nullptr;
    switch (readField<quint16>(bytes, D::codeAt)) {
    case GVCPMessageCode::DiscoveryAck:
        return new GVCPDiscoveryAckPacket(std::move(bytes));
    case GVCPMessageCode::ReadRegisterCommand:
        return new GVCPRegisterReadCommandPacket(std::move(bytes));
    case GVCPMessageCode::WriteRegisterCommand:
        return new GVCPRegisterWriteCommandPacket(std::move(bytes));
    case GVCPMessageCode::ActionCommand:
        return new GVCPActionCommandPacket(std::move(bytes));
    case GVCPMessageCode::DiscoveryCommand:
    case GVCPMessageCode::ForceIpCommand:
    case GVCPMessageCode::PacketResendCommand:
    case GVCPMessageCode::ReadMemoryCommand:
    case GVCPMessageCode::WriteMemoryCommand:
    case GVCPMessageCode::EventCommand:
    case GVCPMessageCode::EventDataCommand:
        return new GVCPCommandPacket(std::move(bytes));
    case GVCPMessageCode::ForceIpAck:
    case GVCPMessageCode::PacketResendAck:
    case GVCPMessageCode::ReadRegisterAck:
    case GVCPMessageCode::WriteRegisterAck:
    case GVCPMessageCode::ReadMemoryAck:
    case GVCPMessageCode::WriteMemoryAck:
    case GVCPMessageCode::EventAck:
    case GVCPMessageCode::EventDataAck:
    case GVCPMessageCode::ActionAck:
        return new GVCPAckPacket(std::move(bytes));
    default:
        return nullptr;
    }
}

GVCPPacket::GVCPPacket() = default;

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
