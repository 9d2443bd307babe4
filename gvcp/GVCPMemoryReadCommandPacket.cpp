#include "gvcp/GVCPMemoryReadCommandPacket.h"

#include "gvcp/GVCPMessageCode.h"
#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"

namespace {
constexpr int addressAt = 0, reservedAt = addressAt + 4, countAt = reservedAt + 2;
} // namespace

GVCPMemoryReadCommandPacket::GVCPMemoryReadCommandPacket(quint16 requestId, quint32 address, quint16 count,
                                                         bool ackRequired)
    : GVCPCommandPacket(ackRequired ? AckRequired : 0, GVCPMessageCode::ReadMemoryCommand, requestId, {},
                        NetworkOrder)
    , m_address(address)
    , m_count(count)
{
    rebuild();
}

GVCPMemoryReadCommandPacket::GVCPMemoryReadCommandPacket(const QByteArray& bytes)
    : GVCPCommandPacket(bytes)
{
}

GVCPMemoryReadCommandPacket::GVCPMemoryReadCommandPacket(ByteSlice&& bytes)
    : GVCPCommandPacket(std::move(bytes))
{
}

GVCPMemoryReadCommandPacket::~GVCPMemoryReadCommandPacket() = default;

quint32 GVCPMemoryReadCommandPacket::address() const
{
    return readField<quint32>(payloadBytes(), addressAt);
}

quint16 GVCPMemoryReadCommandPacket::count() const
{
    return readField<quint16>(payloadBytes(), countAt);
}

void GVCPMemoryReadCommandPacket::setAddress(quint32 address)
{
    m_address = address;
    rebuild();
}

void GVCPMemoryReadCommandPacket::setCount(quint16 count)
{
    m_count = count;
    rebuild();
}

bool GVCPMemoryReadCommandPacket::isAckRequired() const
{
    return hasFlag(AckRequired);
}

void GVCPMemoryReadCommandPacket::rebuild()
{
    setPayload(byteArrayFromUInt32(m_address) + byteArrayFromUInt32(m_count), HostOrder);
}
