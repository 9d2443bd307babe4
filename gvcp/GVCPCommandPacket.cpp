#include "gvcp/GVCPCommandPacket.h"

#include "gvcp/GVCPPacket_p.h"

GVCPCommandPacket::GVCPCommandPacket(quint8 flags, quint16 code, quint16 requestId, const QByteArray& payload,
                                     ByteOrder byteOrder)
{
    d->statusOrFlags = flags;
    d->code = code;
    d->requestId = requestId;
    setPayload(payload, byteOrder);
}

GVCPCommandPacket::GVCPCommandPacket(const QByteArray& bytes)
    : GVCPCommandPacket(ByteSlice(bytes))
{
}

GVCPCommandPacket::GVCPCommandPacket(ByteSlice&& bytes)
{
    d->valid = D::isLengthRight(bytes) && readField<quint8>(bytes, D::keyAt) == KeyByte;
    if (!d->valid)
        return;
    d->statusOrFlags = readField<quint8>(bytes, D::flagsAt);
    d->parse(std::move(bytes));
}

QByteArray GVCPCommandPacket::serialize() const
{
    const D& r = *d;
    if (!r.isSendable())
        return {};
    return r.message(quint16(quint16(KeyByte) << 8 | flags()), payloadLength());
}

bool GVCPCommandPacket::isCommand() const
{
    return true;
}

quint16 GVCPCommandPacket::command() const
{
    return d->code;
}

void GVCPCommandPacket::setCommand(quint16 code)
{
    d->code = code;
}

quint8 GVCPCommandPacket::flags() const
{
    return quint8(d->statusOrFlags);
}

bool GVCPCommandPacket::hasFlag(quint8 mask) const
{
    return (flags() & mask) != 0;
}

void GVCPCommandPacket::setFlags(quint8 value)
{
    d->statusOrFlags = value;
}
