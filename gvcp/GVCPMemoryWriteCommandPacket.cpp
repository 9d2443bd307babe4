#include "gvcp/GVCPMemoryWriteCommandPacket.h"

#include "gvcp/GVCPMessageCode.h"
#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"

namespace {
constexpr int addressAt = 0, dataAt = addressAt + 4;
constexpr int wordSizeBytes = 4;
} // namespace

GVCPMemoryWriteCommandPacket::GVCPMemoryWriteCommandPacket(quint16 requestId, quint32 address,
                                                           const QByteArray& data)
    : GVCPCommandPacket(0, GVCPMessageCode::WriteMemoryCommand, requestId, {}, NetworkOrder)
    , m_address(address)
    , m_data(data)
{
    rebuild();
}

GVCPMemoryWriteCommandPacket::GVCPMemoryWriteCommandPacket(const QByteArray& bytes)
    : GVCPCommandPacket(bytes)
{
}

GVCPMemoryWriteCommandPacket::GVCPMemoryWriteCommandPacket(ByteSlice&& bytes)
    : GVCPCommandPacket(std::move(bytes))
{
}

GVCPMemoryWriteCommandPacket::~GVCPMemoryWriteCommandPacket() = default;

quint32 GVCPMemoryWriteCommandPacket::address() const
{
    return readField<quint32>(payloadBytes(), addressAt);
}

QByteArray GVCPMemoryWriteCommandPacket::data() const
{
    return payloadBytes().mid(dataAt).array();
}

void GVCPMemoryWriteCommandPacket::setAddress(quint32 address)
{
    m_address = address;
    rebuild();
}

void GVCPMemoryWriteCommandPacket::setData(const QByteArray& data)
{
    m_data = data;
    rebuild();
}

// Handed over as bytes of the wire: as words of the host the data would be turned around twice.
void GVCPMemoryWriteCommandPacket::rebuild()
{
    const int wholeWords = m_data.size() - m_data.size() % wordSizeBytes;
    QByteArray bytes(dataAt + wholeWords, Qt::Uninitialized);
    qToBigEndian(m_address, bytes.data() + addressAt);
    std::memcpy(bytes.data() + dataAt, m_data.constData(), std::size_t(wholeWords));
    setPayload(bytes, NetworkOrder);
}
