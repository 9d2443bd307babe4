#pragma once

#include "gvcp/GVCPCommandPacket.h"

/// Asks a device for a block of its memory (GVCP message 0x0084). Payload:
///
/// | byte | width | field                |
/// |-----:|------:|----------------------|
/// |    0 |     4 | address              |
/// |    4 |     2 | reserved, 0          |
/// |    6 |     2 | count of bytes       |
///
/// Numbers in network byte order on the wire, in host byte order here. The getters read the payload, a field
/// behind its end reads 0. The setters write what was set before, not what was received. Never throws. [one
/// thread at a time]
class GVCPMemoryReadCommandPacket : public GVCPCommandPacket {
public:
    GVCPMemoryReadCommandPacket(quint16 requestId, quint32 address, quint16 count, bool ackRequired);
    explicit GVCPMemoryReadCommandPacket(const QByteArray& bytes);
    explicit GVCPMemoryReadCommandPacket(ByteSlice&& bytes);
    ~GVCPMemoryReadCommandPacket() override;

    quint32 address() const;
    quint16 count() const;
    /// Makes the payload anew, with the count last set; 0 in a received packet.
    void setAddress(quint32 address);
    /// Makes the payload anew, with the address last set; 0 in a received packet.
    void setCount(quint16 count);
    bool isAckRequired() const;

private:
    void rebuild();

    quint32 m_address = 0;
    quint32 m_count = 0; // high half: the reserved field
};
