#include "packets/EthernetFrame.h"

#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"
#include "packets/Crc32.h"
#include "packets/FrameRoom.h"
#include "packets/InternetPacket.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

namespace {
constexpr int destinationAt = 0, sourceAt = destinationAt + MacAddress::sizeBytes,
              typeAt = sourceAt + MacAddress::sizeBytes, payloadAt = typeAt + 2;
constexpr int tagControlAt = typeAt + 2, taggedTypeAt = tagControlAt + 2, taggedPayloadAt = taggedTypeAt + 2;
static_assert(payloadAt == int(EthernetFrame::headerSizeBytes), "IEEE 802.3: 14 bytes");
static_assert(taggedPayloadAt == int(EthernetFrame::taggedHeaderSizeBytes), "IEEE 802.1Q: 4 bytes more");

void writeAddress(char* at, const MacAddress& address)
{
    std::memcpy(at, address.constData(), MacAddress::sizeBytes);
}
} // namespace

struct EthernetFrame::D {
    MacAddress source;
    MacAddress destination;
    InternetPacket* child = nullptr;
    QByteArray raw;
    quint16 etherType = 0;
    quint32 headerSize = 0;
    bool crcPresent = false;
    qint32 userValue = -1;
    bool userFlag = false;

    D(const MacAddress& from, const MacAddress& to)
        : source(from)
        , destination(to)
    {
    }

    explicit D(QByteArray&& bytes)
        : source(readMacAddress(bytes, sourceAt))
        , destination(readMacAddress(bytes, destinationAt))
    {
        if (parseHeader(bytes))
            raw = std::move(bytes);
    }

    /// Whether the array holds a whole header; takes type and header size from it.
    bool parseHeader(const QByteArray& bytes);
    QByteArray serializeChild() const;
};

bool EthernetFrame::D::parseHeader(const QByteArray& bytes)
{
    if (bytes.size() < payloadAt)
        return false;
    const quint16 type = readField<quint16>(bytes, typeAt);
    if (type != vlanTagType) {
        etherType = type;
        headerSize = headerSizeBytes;
        return true;
    }
    if (bytes.size() < taggedPayloadAt)
        return false;
    etherType = readField<quint16>(bytes, taggedTypeAt);
    headerSize = taggedHeaderSizeBytes;
    return true;
}

QByteArray EthernetFrame::D::serializeChild() const
{
    const quint16 type = child->etherType();
    QByteArray frame = InternetPacket::serializeIn({payloadAt, int(minimumFrameSize)}, *child);
    char* const to = frame.data();
    writeAddress(to + destinationAt, destination);
    writeAddress(to + sourceAt, source);
    qToBigEndian(type, to + typeAt);
    return frame;
}

EthernetFrame::EthernetFrame(const MacAddress& source, const MacAddress& destination, InternetPacket* child)
    : d(source, destination)
{
    d->child = child;
    d->headerSize = headerSizeBytes;
}

EthernetFrame::EthernetFrame(const MacAddress& source, const MacAddress& destination,
                             const QByteArray& typeAndPayload)
    : d(source, destination)
{
    if (typeAndPayload.size() < 2)
        return;
    d->raw = QByteArray(typeAt + typeAndPayload.size(), Qt::Uninitialized);
    char* const to = d->raw.data();
    writeAddress(to + destinationAt, destination);
    writeAddress(to + sourceAt, source);
    std::copy(typeAndPayload.begin(), typeAndPayload.end(), to + typeAt);
}

EthernetFrame::EthernetFrame(const QByteArray& bytes)
    : EthernetFrame(QByteArray(bytes))
{
}

EthernetFrame::EthernetFrame(QByteArray&& bytes)
    : d(std::move(bytes))
{
}

EthernetFrame::~EthernetFrame() = default;

quint32 EthernetFrame::layer() const
{
    return 2;
}

quint32 EthernetFrame::headerSize() const
{
    return d->headerSize;
}

quint32 EthernetFrame::payloadSize() const
{
    const D& r = *d;
    const qint64 size =
        r.child != nullptr ? qint64(r.child->totalSize()) : r.raw.size() - qint64(r.headerSize);
    return quint32(std::max(size, qint64(minimumFrameSize) - r.headerSize));
}

quint32 EthernetFrame::totalSize() const
{
    const D& r = *d;
    const quint32 size = r.child != nullptr ? r.headerSize + r.child->totalSize() : quint32(r.raw.size());
    return std::max(size, minimumFrameSize);
}

const MacAddress& EthernetFrame::source() const
{
    return d->source;
}

const MacAddress& EthernetFrame::destination() const
{
    return d->destination;
}

quint16 EthernetFrame::etherType() const
{
    return d->etherType;
}

QByteArray EthernetFrame::serialize() const
{
    const D& r = *d;
    return r.child != nullptr ? r.serializeChild() : r.raw;
}

bool EthernetFrame::hasCrc() const
{
    return d->crcPresent;
}

void EthernetFrame::appendCrc(quint32 xorMask)
{
    const quint32 sequence = ethernetCrc32(d->raw.constData(), std::size_t(d->raw.size())) ^ xorMask;
    char wire[sizeof(sequence)];
    qToLittleEndian(sequence, wire);
    d->raw.append(wire, int(sizeof(wire)));
    d->crcPresent = true;
}

InternetPacket* EthernetFrame::internetPacket() const
{
    const D& r = *d;
    if (r.child != nullptr)
        return InternetPacket::copyOf(*r.child);
    ByteSlice payload(r.raw);
    payload.narrow(int(r.headerSize));
    return InternetPacket::create(r.etherType, std::move(payload));
}

EthernetFrame* EthernetFrame::clone(bool withCrc, quint32 xorMask) const
{
    auto copy = std::make_unique<EthernetFrame>(serialize());
    if (withCrc)
        copy->appendCrc(xorMask);
    copy->setUserValue(d->userValue);
    copy->setUserFlag(d->userFlag);
    return copy.release();
}

qint32 EthernetFrame::userValue() const
{
    return d->userValue;
}

void EthernetFrame::setUserValue(qint32 value)
{
    d->userValue = value;
}

bool EthernetFrame::userFlag() const
{
    return d->userFlag;
}

void EthernetFrame::setUserFlag(bool flag)
{
    d->userFlag = flag;
}
