#include "packets/IcmpPacket.h"

#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"
#include "packets/InternetChecksum.h"

namespace {
constexpr int typeAt = 0, codeAt = typeAt + 1, checksumAt = codeAt + 1, dataAt = checksumAt + 2;
constexpr quint8 echoReplyType = 0, echoRequestType = 8;
constexpr quint8 echoCode = 0;
} // namespace

struct IcmpPacket::D {
    quint8 type = 0;
    quint8 code = 0;
    quint16 checksum = 0;
    ByteSlice data;
    bool checksumDirty = true;

    D() = default;
    D(quint8 typeByte, quint8 codeByte, ByteSlice&& bytes)
        : type(typeByte)
        , code(codeByte)
        , data(std::move(bytes))
    {
    }
    explicit D(ByteSlice&& message)
        : type(readField<quint8>(message, typeAt))
        , code(readField<quint8>(message, codeAt))
        , checksum(readField<quint16>(message, checksumAt))
        , data(std::move(message))
        , checksumDirty(false)
    {
        data.narrow(dataAt);
    }

    void updateChecksum();
};

void IcmpPacket::D::updateChecksum()
{
    if (!checksumDirty)
        return;
    const quint64 sum = (quint32(type) << 8 | code) + sumOfWords(data.constData(), std::size_t(data.size()));
    checksum = quint16(~foldedSum(sum));
    checksumDirty = false;
}

IcmpPacket::IcmpPacket(quint8 type, quint8 code, const QByteArray& data)
    : d(type, code, ByteSlice(data))
{
}

IcmpPacket::IcmpPacket(const QByteArray& bytes)
    : IcmpPacket(ByteSlice(bytes))
{
}

IcmpPacket::IcmpPacket(ByteSlice&& bytes)
    : d(std::move(bytes))
{
}

IcmpPacket::IcmpPacket(const IcmpPacket& other)
    : TransportPacket(other)
    , d(*other.d)
{
}

IcmpPacket::IcmpPacket(const TransportPacket& other)
{
    if (const auto* same = dynamic_cast<const IcmpPacket*>(&other))
        *d = *same->d;
}

IcmpPacket::~IcmpPacket() = default;

quint32 IcmpPacket::headerSize() const
{
    return dataAt;
}

quint32 IcmpPacket::payloadSize() const
{
    return quint32(d->data.size());
}

QByteArray IcmpPacket::serialize(const IpAddress& /*source*/, const IpAddress& /*destination*/) const
{
    d->updateChecksum();
    const D& r = *d;
    QByteArray message(dataAt + r.data.size(), Qt::Uninitialized);
    char* const to = message.data();
    to[typeAt] = char(r.type);
    to[codeAt] = char(r.code);
    qToBigEndian(r.checksum, to + checksumAt);
    std::memcpy(to + dataAt, r.data.constData(), std::size_t(r.data.size()));
    return message;
}

quint32 IcmpPacket::length() const
{
    return totalSize();
}

bool IcmpPacket::isValid() const
{
    return true;
}

QByteArray IcmpPacket::protocolName() const
{
    return QByteArrayLiteral("ICMP");
}

quint8 IcmpPacket::protocol() const
{
    return Protocol;
}

const QByteArray& IcmpPacket::payload() const
{
    return d->data.array();
}

quint8 IcmpPacket::type() const
{
    return d->type;
}

quint8 IcmpPacket::code() const
{
    return d->code;
}

quint16 IcmpPacket::checksum() const
{
    return d->checksum;
}

IcmpPacket* IcmpPacket::echoReply() const
{
    const D& r = *d;
    if (r.type != echoRequestType || r.code != echoCode)
        return nullptr;
    return new IcmpPacket(echoReplyType, echoCode, r.data.array());
}
