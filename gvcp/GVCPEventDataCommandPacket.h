#pragma once

#include "gvcp/GVCPCommandPacket.h"

/// Event of a device with data (GVCP message 0x00C2). The payload is one record, of 16 bytes or with the flag
/// ExtendedIds of 24, and then the data:
///
/// | byte | width | without the flag     | byte | width | with the flag        |
/// |-----:|------:|----------------------|-----:|------:|----------------------|
/// |    0 |     2 | reserved             |    0 |     2 | reserved             |
/// |    2 |     2 | event id             |    2 |     2 | event id             |
/// |    4 |     2 | stream channel index |    4 |     2 | stream channel index |
/// |    6 |     2 | block id             |    6 |     2 | reserved             |
/// |    8 |     8 | timestamp            |    8 |     8 | block id             |
/// |   16 |     n | data                 |   16 |     8 | timestamp            |
/// |      |       |                      |   24 |     n | data                 |
///
/// Numbers in network byte order on the wire, in host byte order here. A field behind the end reads 0, what
/// is cut short counts as far as it is there. Never throws. [one thread at a time]
class GVCPEventDataCommandPacket : public GVCPCommandPacket {
public:
    explicit GVCPEventDataCommandPacket(const QByteArray& bytes);
    explicit GVCPEventDataCommandPacket(ByteSlice&& bytes);
    ~GVCPEventDataCommandPacket() override;

    quint16 eventId() const;
    quint16 streamChannelIndex() const;
    quint64 blockId() const;
    /// In ticks of the device.
    quint64 timestamp() const;
    /// Empty if nothing follows the record.
    QByteArray data() const;
};
