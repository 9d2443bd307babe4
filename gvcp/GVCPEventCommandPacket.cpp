#include "gvcp/GVCPEventCommandPacket.h"

#include "gvcp/GVCPEventRecord.h"

using Record = GVCPEventRecord;

GVCPEventCommandPacket::GVCPEventCommandPacket(const QByteArray& bytes)
    : GVCPCommandPacket(bytes)
{
}

GVCPEventCommandPacket::GVCPEventCommandPacket(ByteSlice&& bytes)
    : GVCPCommandPacket(std::move(bytes))
{
}

GVCPEventCommandPacket::~GVCPEventCommandPacket() = default;

quint16 GVCPEventCommandPacket::eventCount() const
{
    return quint16(payloadBytes().size() / Record::size(isExtended()));
}

quint16 GVCPEventCommandPacket::eventId(quint32 index) const
{
    return readField<quint16>(payloadBytes(), recordAt(index) + Record::eventIdAt);
}

quint16 GVCPEventCommandPacket::streamChannelIndex(quint32 index) const
{
    return readField<quint16>(payloadBytes(), recordAt(index) + Record::streamChannelIndexAt);
}

quint64 GVCPEventCommandPacket::blockId(quint32 index) const
{
    return Record::blockId(payloadBytes(), recordAt(index), isExtended());
}

quint64 GVCPEventCommandPacket::timestamp(quint32 index) const
{
    return Record::timestamp(payloadBytes(), recordAt(index), isExtended());
}

// Behind the payload, where every field reads 0, for a record that isn't there.
int GVCPEventCommandPacket::recordAt(quint32 index) const
{
    return index < eventCount() ? int(index) * Record::size(isExtended()) : payloadBytes().size();
}
