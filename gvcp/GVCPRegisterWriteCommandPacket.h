#pragma once

#include "gvcp/GVCPCommandPacket.h"

/// Writes registers of a device (GVCP message 0x0082). Payload:
///
/// |      byte | width | field                 |
/// |----------:|------:|-----------------------|
/// |     8 * i |     4 | i-th register address |
/// | 8 * i + 4 |     4 | i-th value            |
///
/// Numbers in network byte order on the wire, in host byte order here. The getters read the payload. Never
/// throws. [one thread at a time]
class GVCPRegisterWriteCommandPacket : public GVCPCommandPacket {
public:
    /// @param byteOrder see setValue().
    GVCPRegisterWriteCommandPacket(quint16 requestId, quint32 address, quint32 value, ByteOrder byteOrder);
    explicit GVCPRegisterWriteCommandPacket(const QByteArray& bytes);
    explicit GVCPRegisterWriteCommandPacket(ByteSlice&& bytes);
    ~GVCPRegisterWriteCommandPacket() override;

    /// Whole pairs of address and value in the payload.
    quint16 registerCount() const;
    /// 0 if @p index isn't below registerCount(), here and below.
    quint32 address(quint32 index) const;
    quint32 value(quint32 index) const;
    /// Replaces the first address; what follows it stays.
    void setAddress(quint32 address);
    /// Replaces all that follows the first address.
    /// @param byteOrder order in which @p value lies in memory.
    void setValue(quint32 value, ByteOrder byteOrder);
};
