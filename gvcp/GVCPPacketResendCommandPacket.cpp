#include "gvcp/GVCPPacketResendCommandPacket.h"

#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"

namespace {
constexpr int channelAt = 0, blockAt = channelAt + 2, firstIdAt = blockAt + 2, lastIdAt = firstIdAt + 4;
static_assert(lastIdAt + 4 == 12, "GigE Vision: size of a resend payload");

constexpr quint32 packetIdMask = 0xffffff;
} // namespace

GVCPPacketResendCommandPacket::GVCPPacketResendCommandPacket(const QByteArray& bytes)
    : GVCPCommandPacket(bytes)
{
}

GVCPPacketResendCommandPacket::GVCPPacketResendCommandPacket(ByteSlice&& bytes)
    : GVCPCommandPacket(std::move(bytes))
{
}

GVCPPacketResendCommandPacket::~GVCPPacketResendCommandPacket() = default;

quint16 GVCPPacketResendCommandPacket::streamChannelIndex() const
{
    return readField<quint16>(payloadBytes(), channelAt);
}

quint16 GVCPPacketResendCommandPacket::blockId() const
{
    return readField<quint16>(payloadBytes(), blockAt);
}

quint32 GVCPPacketResendCommandPacket::firstPacketId() const
{
    return readField<quint32>(payloadBytes(), firstIdAt) & packetIdMask;
}

quint32 GVCPPacketResendCommandPacket::lastPacketId() const
{
    return readField<quint32>(payloadBytes(), lastIdAt) & packetIdMask;
}
