#pragma once

#include "packets/MacAddress.h"
#include "packets/NetworkPacket.h"
#include "packets/PlacedRecord.h"

#include <QByteArray>

class InternetPacket;

/// Ethernet II frame with at most one IEEE 802.1Q tag, without preamble.
///
/// | byte        | width | field                                         |
/// |------------:|------:|-----------------------------------------------|
/// |           0 |     6 | destination address                           |
/// |           6 |     6 | source address                                |
/// |          12 |     2 | EtherType; 0x8100 announces a tag             |
/// |   14 if tag |     2 | tag control information, not looked at        |
/// |   16 if tag |     2 | EtherType of the payload                      |
/// |    14 or 18 |     n | payload                                       |
///
/// Numbers in network byte order. A frame has one of two forms for life: child-backed (its bytes come from
/// the child on demand) or raw-backed (its bytes are held). A frame check sequence is never looked for: in a
/// parsed frame it counts as payload. Never throws. [one thread at a time]
class EthernetFrame : public NetworkPacket {
public:
    /// Size of the shortest frame, without its frame check sequence (IEEE 802.3).
    static constexpr quint32 minimumFrameSize = 60;
    static constexpr quint32 headerSizeBytes = 14;
    static constexpr quint32 taggedHeaderSizeBytes = 18;
    static constexpr quint16 vlanTagType = 0x8100;

    /// Child-backed frame.
    /// @param child stays the caller's and must outlive this frame; later changes of it show in the frame.
    EthernetFrame(const MacAddress& source, const MacAddress& destination, InternetPacket* child);
    /// Raw-backed frame that is not parsed: headerSize() and etherType() are 0.
    /// @param typeAndPayload what follows the addresses; with fewer than 2 bytes the frame stays empty.
    EthernetFrame(const MacAddress& source, const MacAddress& destination, const QByteArray& typeAndPayload);
    /// Raw-backed frame, parsed. It shares @p bytes, tag and trailing bytes included; the payload is neither
    /// copied nor looked at. Where fewer than 14 bytes (18 with a tag) are given the frame keeps none.
    explicit EthernetFrame(const QByteArray& bytes);
    /// The same from an array that is given up: on the way in a frame is the array's one holder.
    explicit EthernetFrame(QByteArray&& bytes);
    EthernetFrame(const EthernetFrame&) = delete;
    EthernetFrame& operator=(const EthernetFrame&) = delete;
    ~EthernetFrame() override;

    /// 2.
    quint32 layer() const override;
    /// 14, 18 with a tag, 0 in a frame that was not parsed.
    quint32 headerSize() const override;
    /// Counted as if the frame was padded to 60 bytes.
    quint32 payloadSize() const override;
    /// At least 60, though serialize() of a raw-backed frame may give fewer bytes.
    quint32 totalSize() const override;

    const MacAddress& source() const;
    const MacAddress& destination() const;
    /// Type read from the bytes, behind the tag if there is one, in host byte order; 0 in a built frame.
    quint16 etherType() const;

    /// The frame's bytes. A raw-backed frame gives exactly those it holds; a child-backed one is written
    /// anew, filled up with zeros to 60 bytes and has no frame check sequence.
    QByteArray serialize() const;
    /// True once appendCrc() has run.
    bool hasCrc() const;
    /// Appends the frame check sequence (IEEE 802.3) of the bytes held, without padding them first. A second
    /// call appends a second one. It doesn't show in a child-backed frame, see clone().
    /// @param xorMask bits of the sequence to flip, 0 for a correct one.
    void appendCrc(quint32 xorMask);

    /// @returns a new packet that the caller owns; null for an EtherType other than IPv4 and ARP. The packet
    /// of a child-backed frame is a copy of its child.
    [[nodiscard]] InternetPacket* internetPacket() const;
    /// @returns a new raw-backed frame of the bytes of serialize() that the caller owns, with the caller's
    /// value and flag.
    /// @param withCrc appendCrc(@p xorMask) runs on the new frame.
    [[nodiscard]] EthernetFrame* clone(bool withCrc, quint32 xorMask) const;

    /// A value of the caller's, -1 at first; nothing here looks at it.
    qint32 userValue() const;
    void setUserValue(qint32 value);
    /// A flag of the caller's, false at first; nothing here looks at it.
    bool userFlag() const;
    void setUserFlag(bool flag);

private:
    struct D;
    PlacedRecord<D, 56> d;
};
