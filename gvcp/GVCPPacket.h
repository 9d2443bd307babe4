#pragma once

#include "gvcp/ByteOrder.h"
#include "packets/ApplicationPacket.h"
#include "packets/PlacedRecord.h"

class ByteSlice;

/// Message of the GigE Vision Control Protocol (GigE Vision, AIA), which runs over UDP port 3956: what
/// commands and acknowledges have in common.
///
/// | byte | width | command                        | acknowledge       |
/// |-----:|------:|--------------------------------|-------------------|
/// |    0 |     1 | key, 0x42                      | status, high byte |
/// |    1 |     1 | flags                          | status, low byte  |
/// |    2 |     2 | command code                   | acknowledge code  |
/// |    4 |     2 | size of the payload in bytes   | likewise          |
/// |    6 |     2 | request id, never 0            | acknowledge id    |
/// |    8 |     n | payload                        | payload           |
///
/// Numbers in network byte order on the wire, in host byte order here. A received message whose length field
/// doesn't fit its bytes (fewer than 8 never do) is not valid and keeps its defaults: id, code, flags or
/// status 0, no payload. Never throws. [one thread at a time, payload() and the getters that read it too]
class GVCPPacket : public ApplicationPacket {
public:
    static constexpr quint32 HeaderSize = 8;
    static constexpr quint8 KeyByte = 0x42;
    static constexpr quint16 Port = 3956;
    /// Flags of a command: an acknowledge is asked for; identifiers have 64 bits.
    static constexpr quint8 AckRequired = 0x01;
    static constexpr quint8 ExtendedIds = 0x10;
    /// Largest payload that is held; a message holds one byte less.
    static constexpr int payloadSizeMaxBytes = 65536;

    /// @returns a new packet of the class for the message code of @p bytes, which the caller owns; null for
    /// fewer than 8 bytes and for a code without a class. It may be one that is not valid. Register and
    /// action commands and the discovery acknowledge get a class of their own, all others that of a command
    /// or an acknowledge.
    [[nodiscard]] static GVCPPacket* create(const QByteArray& bytes);
    /// The same from a part of an array that is given up, without a copy of it.
    [[nodiscard]] static GVCPPacket* create(ByteSlice&& bytes);

    GVCPPacket(const GVCPPacket&) = delete;
    GVCPPacket& operator=(const GVCPPacket&) = delete;
    ~GVCPPacket() override;

    /// 8.
    quint32 headerSize() const override;
    quint32 payloadSize() const override;
    /// What follows the header, as on the wire.
    virtual QByteArray payload() const;
    /// True if setPayload() takes these bytes: at most 65,536.
    virtual bool isPayloadValid(const QByteArray& bytes) const;
    virtual bool isCommand() const = 0;

    /// Request id of a command, acknowledge id of an acknowledge.
    quint16 requestId() const;
    /// From here on the packet is valid if @p id isn't 0, whatever it was before.
    void setRequestId(quint16 id);
    /// False for a message received with another length or another key, with a payload that was refused, or
    /// with the id 0.
    bool isValid() const;
    /// Size of the payload held, low 16 bits.
    quint16 payloadLength() const;
    /// Replaces the payload; the packet is valid then if its id isn't 0. Bytes that isPayloadValid() refuses
    /// leave no payload and a packet that is not valid.
    /// @param byteOrder HostOrder: each whole 32-bit word is turned into network order, one to three bytes
    /// behind them are dropped. NetworkOrder: the bytes are shared as they are; memory that they only view
    /// must stay good.
    void setPayload(const QByteArray& bytes, ByteOrder byteOrder);

protected:
    struct D;

    GVCPPacket();

    /// The payload held, to be read in place.
    const ByteSlice& payloadBytes() const;

    PlacedRecord<D, 24> d;
};
