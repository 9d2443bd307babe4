#include "gvcp/GVCPEventDataCommandPacket.h"

#include "gvcp/GVCPEventRecord.h"

using Record = GVCPEventRecord;

GVCPEventDataCommandPacket::GVCPEventDataCommandPacket(const QByteArray& bytes)
    : GVCPCommandPacket(bytes)
{
}

GVCPEventDataCommandPacket::GVCPEventDataCommandPacket(ByteSlice&& bytes)
    : GVCPCommandPacket(std::move(bytes))
{
}

GVCPEventDataCommandPacket::~GVCPEventDataCommandPacket() = default;

quint16 GVCPEventDataCommandPacket::eventId() const
{
    return readField<quint16>(payloadBytes(), Record::eventIdAt);
}

quint16 GVCPEventDataCommandPacket::streamChannelIndex() const
{
    return readField<quint16>(payloadBytes(), Record::streamChannelIndexAt);
}

quint64 GVCPEventDataCommandPacket::blockId() const
{
    return Record::blockId(payloadBytes(), 0, hasFlag(ExtendedIds));
}

quint64 GVCPEventDataCommandPacket::timestamp() const
{
    return Record::timestamp(payloadBytes(), 0, hasFlag(ExtendedIds));
}

QByteArray GVCPEventDataCommandPacket::data() const
{
    return payloadBytes().mid(Record::size(hasFlag(ExtendedIds))).array();
}
