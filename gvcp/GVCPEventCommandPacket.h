#pragma once

#include "gvcp/GVCPCommandPacket.h"

/// Events of a device (GVCP message 0x00C0). The payload is a run of records, whose layout depends on the
/// flag ExtendedIds:
///
/// | byte | width | without the flag     | byte | width | with the flag        |
/// |-----:|------:|----------------------|-----:|------:|----------------------|
/// |    0 |     2 | reserved             |    0 |     2 | reserved             |
/// |    2 |     2 | event id             |    2 |     2 | event id             |
/// |    4 |     2 | stream channel index |    4 |     2 | stream channel index |
/// |    6 |     2 | block id             |    6 |     2 | reserved             |
/// |    8 |     8 | timestamp            |    8 |     8 | block id             |
/// |      |       |                      |   16 |     8 | timestamp            |
///
/// Numbers in network byte order on the wire, in host byte order here. Never throws. [one thread at a time]
class GVCPEventCommandPacket : public GVCPCommandPacket {
public:
    explicit GVCPEventCommandPacket(const QByteArray& bytes);
    explicit GVCPEventCommandPacket(ByteSlice&& bytes);
    ~GVCPEventCommandPacket() override;

    /// Whole records in the payload.
    quint16 eventCount() const;
    /// 0 if @p index isn't below eventCount(), here and below.
    quint16 eventId(quint32 index) const;
    quint16 streamChannelIndex(quint32 index) const;
    quint64 blockId(quint32 index) const;
    /// In ticks of the device.
    quint64 timestamp(quint32 index) const;

private:
    bool isExtended() const { return hasFlag(ExtendedIds); }
    int recordAt(quint32 index) const;
};
