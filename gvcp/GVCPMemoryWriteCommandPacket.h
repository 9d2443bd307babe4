#pragma once

#include "gvcp/GVCPCommandPacket.h"

/// Writes a block of a device's memory (GVCP message 0x0086). Payload:
///
/// | byte | width | field                        |
/// |-----:|------:|------------------------------|
/// |    0 |     4 | address                      |
/// |    4 |     n | data, a whole number of words |
///
/// The address is in network byte order on the wire, in host byte order here; the data stay as they are. The
/// getters read the payload, an address behind its end reads 0. The setters write what was set before, not
/// what was received. Never throws. [one thread at a time]
class GVCPMemoryWriteCommandPacket : public GVCPCommandPacket {
public:
    /// @param data as for setData(): shared also beyond the call, so memory that it only views must stay
    /// good.
    GVCPMemoryWriteCommandPacket(quint16 requestId, quint32 address, const QByteArray& data);
    explicit GVCPMemoryWriteCommandPacket(const QByteArray& bytes);
    explicit GVCPMemoryWriteCommandPacket(ByteSlice&& bytes);
    ~GVCPMemoryWriteCommandPacket() override;

    quint32 address() const;
    QByteArray data() const;
    /// Makes the payload anew, with the data last set; none in a received packet.
    void setAddress(quint32 address);
    /// Makes the payload anew, with the address last set; 0 in a received packet.
    /// @param data is shared, so memory that it only views must stay good. One to three bytes behind the last
    /// whole word don't travel.
    void setData(const QByteArray& data);

private:
    void rebuild();

    quint32 m_address = 0;
    QByteArray m_data;
};
