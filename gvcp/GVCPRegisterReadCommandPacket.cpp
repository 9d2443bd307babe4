#include "gvcp/GVCPRegisterReadCommandPacket.h"

#include "gvcp/GVCPMessageCode.h"
#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"

namespace {
constexpr int addressSizeBytes = 4;
} // namespace

GVCPRegisterReadCommandPacket::GVCPRegisterReadCommandPacket(quint16 requestId, quint32 address,
                                                             bool ackRequired)
    : GVCPCommandPacket(ackRequired ? AckRequired : 0, GVCPMessageCode::ReadRegisterCommand, requestId, {},
                        NetworkOrder)
{
    setAddress(address);
}

GVCPRegisterReadCommandPacket::GVCPRegisterReadCommandPacket(const QByteArray& bytes)
    : GVCPCommandPacket(bytes)
{
}

GVCPRegisterReadCommandPacket::GVCPRegisterReadCommandPacket(ByteSlice&& bytes)
    : GVCPCommandPacket(std::move(bytes))
{
}

GVCPRegisterReadCommandPacket::~GVCPRegisterReadCommandPacket() = default;

quint16 GVCPRegisterReadCommandPacket::addressCount() const
{
    return quint16(payloadBytes().size() / addressSizeBytes);
}

quint32 GVCPRegisterReadCommandPacket::address(quint32 index) const
{
    return index < addressCount() ? readField<quint32>(payloadBytes(), int(index) * addressSizeBytes) : 0;
}

void GVCPRegisterReadCommandPacket::setAddress(quint32 address)
{
    setPayload(byteArrayFromUInt32(address), HostOrder);
}

bool GVCPRegisterReadCommandPacket::isAckRequired() const
{
    return hasFlag(AckRequired);
}
