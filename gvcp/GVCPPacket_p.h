#pragma once

#include "gvcp/GVCPPacket.h"
#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"

/// Record of a GVCP packet, for the classes of commands and acknowledges.
struct GVCPPacket::D {
    static constexpr int statusAt = 0, keyAt = statusAt, flagsAt = keyAt + 1, codeAt = flagsAt + 1,
                         lengthAt = codeAt + 2, idAt = lengthAt + 2, payloadAt = idAt + 2;
    static_assert(payloadAt == int(HeaderSize), "GVCP header: 8 bytes");

    quint16 requestId = 0;
    bool valid = true;
    quint16 statusOrFlags = 0;
    quint16 code = 0;
    ByteSlice payload;

    /// Whether the length field is the size of what follows the header.
    static bool isLengthRight(const ByteSlice& bytes)
    {
        return int(readField<quint16>(bytes, lengthAt)) == bytes.size() - payloadAt;
    }
    /// Takes code, id and payload from bytes whose length is right.
    void parse(ByteSlice&& bytes)
    {
        code = readField<quint16>(bytes, codeAt);
        requestId = readField<quint16>(bytes, idAt);
        payload = std::move(bytes);
        payload.narrow(payloadAt);
        valid = requestId != 0;
    }
    /// False for the id 0 and for a payload that the length field can't tell.
    bool isSendable() const;
    /// A new array of the header and the payload.
    /// @param firstWord what stands in front of the code.
    QByteArray message(quint16 firstWord, quint16 length) const;
    void writeHeader(char* to, quint16 firstWord, quint16 length) const;
};
