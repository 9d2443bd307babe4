#pragma once

#include "gvcp/GVCPPacket.h"

/// Command of the GigE Vision Control Protocol. A message with another first byte than 0x42 is not valid and
/// keeps its defaults, as one with a wrong length does; see GVCPPacket for the layout.
class GVCPCommandPacket : public GVCPPacket {
public:
    /// @param payload see setPayload().
    GVCPCommandPacket(quint8 flags, quint16 code, quint16 requestId, const QByteArray& payload,
                      ByteOrder byteOrder);
    explicit GVCPCommandPacket(const QByteArray& bytes);
    explicit GVCPCommandPacket(ByteSlice&& bytes);

    /// A new array; empty with the request id 0 and with a payload of 65,536 bytes. isValid() plays no part.
    QByteArray serialize() const override;
    /// True.
    bool isCommand() const override;

    /// Command code.
    quint16 command() const;
    void setCommand(quint16 code);
    quint8 flags() const;
    /// True if any bit of @p mask is set in the flags.
    bool hasFlag(quint8 mask) const;
    void setFlags(quint8 value);

    /// True for a datagram to the port of GVCP.
    static bool isCommandPort(quint16 /*sourcePort*/, quint16 destinationPort)
    {
        return destinationPort == Port;
    }
};
