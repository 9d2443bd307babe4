#include "gvcp/GVCPActionCommandPacket.h"

#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"

namespace {
constexpr int deviceKeyAt = 0, groupKeyAt = deviceKeyAt + 4, groupMaskAt = groupKeyAt + 4;
} // namespace

GVCPActionCommandPacket::GVCPActionCommandPacket(const QByteArray& bytes)
    : GVCPCommandPacket(bytes)
{
}

GVCPActionCommandPacket::GVCPActionCommandPacket(ByteSlice&& bytes)
    : GVCPCommandPacket(std::move(bytes))
{
}

GVCPActionCommandPacket::~GVCPActionCommandPacket() = default;

quint32 GVCPActionCommandPacket::deviceKey() const
{
    return readField<quint32>(payloadBytes(), deviceKeyAt);
}

quint32 GVCPActionCommandPacket::groupKey() const
{
    return readField<quint32>(payloadBytes(), groupKeyAt);
}

quint32 GVCPActionCommandPacket::groupMask() const
{
    return readField<quint32>(payloadBytes(), groupMaskAt);
}
