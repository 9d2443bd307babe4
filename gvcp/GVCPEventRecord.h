#pragma once

#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"

/// Places of the fields in one record of an event message; see GVCPEventCommandPacket for the layout.
struct GVCPEventRecord {
    static constexpr int eventIdAt = 2, streamChannelIndexAt = eventIdAt + 2,
                         blockIdAt = streamChannelIndexAt + 2, timestampAt = blockIdAt + 2,
                         sizeBytes = timestampAt + 8;
    static constexpr int extendedBlockIdAt = timestampAt, extendedTimestampAt = extendedBlockIdAt + 8,
                         extendedSizeBytes = extendedTimestampAt + 8;
    static_assert(sizeBytes == 16 && extendedSizeBytes == 24, "GigE Vision: event record");

    static constexpr int size(bool extended) { return extended ? extendedSizeBytes : sizeBytes; }

    /// The block id of the record that starts at @p at.
    static quint64 blockId(const ByteSlice& bytes, int at, bool extended)
    {
        return extended ? readWords(bytes, at + extendedBlockIdAt)
                        : readField<quint16>(bytes, at + blockIdAt);
    }
    static quint64 timestamp(const ByteSlice& bytes, int at, bool extended)
    {
        return readWords(bytes, at + (extended ? extendedTimestampAt : timestampAt));
    }

private:
    // Two fields of 32 bits: of a number that is cut short all that is there counts of each half.
    static quint64 readWords(const ByteSlice& bytes, int at)
    {
        return quint64(readField<quint32>(bytes, at)) << 32 | readField<quint32>(bytes, at + 4);
    }
};
