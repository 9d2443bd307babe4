#include "packets/ByteArrayHelpers.h"

namespace {
template <typename T>
QByteArray fromMemory(T value)
{
    return QByteArray(reinterpret_cast<const char*>(&value), int(sizeof(T)));
}
} // namespace

quint8 byteArrayToUInt8(const QByteArray& bytes)
{
    return readMemory<quint8>(bytes.constData(), bytes.size());
}

quint16 byteArrayToUInt16(const QByteArray& bytes)
{
    return readMemory<quint16>(bytes.constData(), bytes.size());
}

quint32 byteArrayToUInt32(const QByteArray& bytes)
{
    return readMemory<quint32>(bytes.constData(), bytes.size());
}

quint64 byteArrayToUInt64(const QByteArray& bytes)
{
    return readMemory<quint64>(bytes.constData(), bytes.size());
}

QByteArray byteArrayFromUInt8(quint8 value)
{
    return fromMemory(value);
}

QByteArray byteArrayFromUInt16(quint16 value)
{
    return fromMemory(value);
}

QByteArray byteArrayFromUInt32(quint32 value)
{
    return fromMemory(value);
}

QByteArray byteArrayFromUInt64(quint64 value)
{
    return fromMemory(value);
}

QByteArray byteArrayToNetworkWords(const QByteArray& bytes)
{
    const int words = bytes.size() / int(sizeof(quint32));
    QByteArray result(words * int(sizeof(quint32)), Qt::Uninitialized);
    qToBigEndian<quint32>(bytes.constData(), words, result.data());
    return result;
}
