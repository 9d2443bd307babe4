#pragma once

#include "gvcp/GVCPCommandPacket.h"

/// Asks a device for the values of registers (GVCP message 0x0080). Payload:
///
/// |  byte | width | field                 |
/// |------:|------:|-----------------------|
/// | 4 * i |     4 | i-th register address |
///
/// Numbers in network byte order on the wire, in host byte order here. The getters read the payload. Never
/// throws. [one thread at a time]
class GVCPRegisterReadCommandPacket : public GVCPCommandPacket {
public:
    GVCPRegisterReadCommandPacket(quint16 requestId, quint32 address, bool ackRequired);
    explicit GVCPRegisterReadCommandPacket(const QByteArray& bytes);
    explicit GVCPRegisterReadCommandPacket(ByteSlice&& bytes);
    ~GVCPRegisterReadCommandPacket() override;

    /// Whole addresses in the payload.
    quint16 addressCount() const;
    /// 0 if @p index isn't below addressCount().
    quint32 address(quint32 index) const;
    /// This address becomes the only one.
    void setAddress(quint32 address);
    bool isAckRequired() const;
};
