#pragma once

#include "gvcp/GVCPCommandPacket.h"

/// Triggers an action in all devices that know its keys (GVCP message 0x0100). Payload:
///
/// | byte | width | field      |
/// |-----:|------:|------------|
/// |    0 |     4 | device key |
/// |    4 |     4 | group key  |
/// |    8 |     4 | group mask |
///
/// Numbers in network byte order on the wire, in host byte order here. A field behind the end reads 0, one
/// that is cut short as far as it is there. Never throws. [one thread at a time]
class GVCPActionCommandPacket : public GVCPCommandPacket {
public:
    explicit GVCPActionCommandPacket(const QByteArray& bytes);
    explicit GVCPActionCommandPacket(ByteSlice&& bytes);
    ~GVCPActionCommandPacket() override;

    quint32 deviceKey() const;
    quint32 groupKey() const;
    quint32 groupMask() const;
};
