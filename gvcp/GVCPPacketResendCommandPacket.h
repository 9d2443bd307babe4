#pragma once

#include "gvcp/GVCPCommandPacket.h"

/// Asks a device to send stream packets again (GVCP message 0x0040). Payload:
///
/// | byte | width | field                        |
/// |-----:|------:|------------------------------|
/// |    0 |     2 | stream channel index         |
/// |    2 |     2 | block id                     |
/// |    4 |     4 | first packet id, low 24 bits |
/// |    8 |     4 | last packet id, low 24 bits  |
///
/// Numbers in network byte order on the wire, in host byte order here. A field behind the end reads 0, one
/// that is cut short as far as it is there. The longer layout with the flag ExtendedIds is not known. Never
/// throws. [one thread at a time]
class GVCPPacketResendCommandPacket : public GVCPCommandPacket {
public:
    explicit GVCPPacketResendCommandPacket(const QByteArray& bytes);
    explicit GVCPPacketResendCommandPacket(ByteSlice&& bytes);
    ~GVCPPacketResendCommandPacket() override;

    quint16 streamChannelIndex() const;
    quint16 blockId() const;
    quint32 firstPacketId() const;
    quint32 lastPacketId() const;
};
