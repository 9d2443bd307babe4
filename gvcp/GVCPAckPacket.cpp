#include "gvcp/GVCPAckPacket.h"

#include "gvcp/GVCPCommandPacket.h"
#include "gvcp/GVCPPacket_p.h"

GVCPAckPacket::GVCPAckPacket(const QByteArray& bytes)
    : GVCPAckPacket(ByteSlice(bytes))
{
}

GVCPAckPacket::GVCPAckPacket(ByteSlice&& bytes)
{
    d->valid = D::isLengthRight(bytes);
    if (!d->valid)
        return;
    d->statusOrFlags = readField<quint16>(bytes, D::statusAt);
    d->parse(std::move(bytes));
}

GVCPAckPacket::GVCPAckPacket(quint16 status, const GVCPCommandPacket& command, const QByteArray& payload,
                             ByteOrder byteOrder)
    : GVCPAckPacket(status, quint16(command.command() + 1), command.requestId(), payload, byteOrder)
{
}

GVCPAckPacket::GVCPAckPacket(quint16 status, quint16 ackCode, quint16 ackId, const QByteArray& payload,
                             ByteOrder byteOrder)
{
    d->statusOrFlags = status;
    d->code = ackCode;
    setRequestId(ackId);
    setPayload(payload, byteOrder);
}

QByteArray GVCPAckPacket::serialize() const
{
    const D& r = *d;
    if (!r.isSendable())
        return {};
    return r.message(r.statusOrFlags, quint16(payloadSize()));
}

bool GVCPAckPacket::isCommand() const
{
    return false;
}

quint16 GVCPAckPacket::acknowledge() const
{
    return d->code;
}

void GVCPAckPacket::setAcknowledge(quint16 code)
{
    d->code = code;
}

quint16 GVCPAckPacket::status() const
{
    return d->statusOrFlags;
}

void GVCPAckPacket::setStatus(quint16 status)
{
    d->statusOrFlags = status;
}

QByteArray GVCPAckPacket::header() const
{
    const D& r = *d;
    QByteArray header(int(HeaderSize), Qt::Uninitialized);
    r.writeHeader(header.data(), r.statusOrFlags, quint16(payloadSize()));
    return header;
}
