#include "gvcp/GVCPRegisterWriteCommandPacket.h"

#include "gvcp/GVCPMessageCode.h"
#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"

namespace {
constexpr int addressAt = 0, valueAt = addressAt + 4, pairSizeBytes = valueAt + 4;
} // namespace

GVCPRegisterWriteCommandPacket::GVCPRegisterWriteCommandPacket(quint16 requestId, quint32 address,
                                                               quint32 value, ByteOrder byteOrder)
    : GVCPCommandPacket(0, GVCPMessageCode::WriteRegisterCommand, requestId, {}, NetworkOrder)
{
    setAddress(address);
    setValue(value, byteOrder);
}

GVCPRegisterWriteCommandPacket::GVCPRegisterWriteCommandPacket(const QByteArray& bytes)
    : GVCPCommandPacket(bytes)
{
}

GVCPRegisterWriteCommandPacket::GVCPRegisterWriteCommandPacket(ByteSlice&& bytes)
    : GVCPCommandPacket(std::move(bytes))
{
}

GVCPRegisterWriteCommandPacket::~GVCPRegisterWriteCommandPacket() = default;

quint16 GVCPRegisterWriteCommandPacket::registerCount() const
{
    return quint16(payloadBytes().size() / pairSizeBytes);
}

quint32 GVCPRegisterWriteCommandPacket::address(quint32 index) const
{
    if (index >= registerCount())
        return 0;
    return readField<quint32>(payloadBytes(), int(index) * pairSizeBytes + addressAt);
}

quint32 GVCPRegisterWriteCommandPacket::value(quint32 index) const
{
    if (index >= registerCount())
        return 0;
    return readField<quint32>(payloadBytes(), int(index) * pairSizeBytes + valueAt);
}

void GVCPRegisterWriteCommandPacket::setAddress(quint32 address)
{
    setPayload(byteArrayFromUInt32(qToBigEndian(address)) + payload().mid(valueAt), NetworkOrder);
}

void GVCPRegisterWriteCommandPacket::setValue(quint32 value, ByteOrder byteOrder)
{
    const quint32 wireValue = byteOrder == HostOrder ? qToBigEndian(value) : value;
    setPayload(payload().left(valueAt) + byteArrayFromUInt32(wireValue), NetworkOrder);
}
