#pragma once

#include "gvcp/GVCPPacket.h"

class GVCPCommandPacket;

/// Acknowledge of the GigE Vision Control Protocol: the answer to a command, with a status and the command's
/// request id. It has no key byte: any first two bytes are a status. See GVCPPacket for the layout.
class GVCPAckPacket : public GVCPPacket {
public:
    explicit GVCPAckPacket(const QByteArray& bytes);
    explicit GVCPAckPacket(ByteSlice&& bytes);
    /// Answers @p command: its code plus 1, its request id. The command is not kept.
    /// @param payload see setPayload().
    GVCPAckPacket(quint16 status, const GVCPCommandPacket& command, const QByteArray& payload,
                  ByteOrder byteOrder);
    GVCPAckPacket(quint16 status, quint16 ackCode, quint16 ackId, const QByteArray& payload,
                  ByteOrder byteOrder);

    /// A new array; empty with the acknowledge id 0 and with a payload of 65,536 bytes. isValid() plays no
    /// part.
    QByteArray serialize() const override;
    /// False.
    bool isCommand() const override;

    /// Acknowledge code.
    quint16 acknowledge() const;
    void setAcknowledge(quint16 code);
    /// 0 for success.
    quint16 status() const;
    void setStatus(quint16 status);
    /// The eight bytes of the header alone, with the low 16 bits of payloadSize() as their length.
    QByteArray header() const;

    /// True for a datagram from the port of GVCP.
    static bool isAckPort(quint16 sourcePort, quint16 /*destinationPort*/) { return sourcePort == Port; }
};
