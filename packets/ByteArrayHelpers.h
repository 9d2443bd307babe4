#pragma once

#include <QByteArray>
#include <QtEndian>

#include <cstring>
#include <type_traits>

// A read past the end never fails: a field that is cut short reads as the largest half, quarter or eighth of
// it that is there, zero-extended, and a missing field as 0.

/// First byte; 0 if there is none.
quint8 byteArrayToUInt8(const QByteArray& bytes);
/// First two bytes as they lie in memory, not swapped; of a shorter array byteArrayToUInt8().
quint16 byteArrayToUInt16(const QByteArray& bytes);
/// First four bytes likewise; of a shorter array byteArrayToUInt16().
quint32 byteArrayToUInt32(const QByteArray& bytes);
/// First eight bytes likewise; of a shorter array byteArrayToUInt32().
quint64 byteArrayToUInt64(const QByteArray& bytes);

/// A new array of the value's bytes as they lie in memory.
QByteArray byteArrayFromUInt8(quint8 value);
QByteArray byteArrayFromUInt16(quint16 value);
QByteArray byteArrayFromUInt32(quint32 value);
QByteArray byteArrayFromUInt64(quint64 value);

/// A new array of the whole 32-bit words of @p bytes, each turned from host to network byte order. One to
/// three bytes at the end are dropped.
QByteArray byteArrayToNetworkWords(const QByteArray& bytes);

/// Number of type @p T at @p data as it lies in memory, where @p thereBytes bytes can be read (may be
/// negative: none).
template <typename T>
T readMemory(const char* data, int thereBytes) noexcept
{
    static_assert(std::is_unsigned_v<T>);
    if (thereBytes >= int(sizeof(T))) {
        T value;
        std::memcpy(&value, data, sizeof(T));
        return value;
    }
    if constexpr (sizeof(T) == 8)
        return readMemory<quint32>(data, thereBytes);
    else if constexpr (sizeof(T) == 4)
        return readMemory<quint16>(data, thereBytes);
    else if constexpr (sizeof(T) == 2)
        return readMemory<quint8>(data, thereBytes);
    else
        return 0;
}

/// Field of type @p T in network byte order at @p at, in host byte order. Reads in place.
/// @p Bytes is a QByteArray or a ByteSlice.
template <typename T, typename Bytes>
T readField(const Bytes& bytes, int at) noexcept
{
    if (at < 0 || at >= bytes.size())
        return 0;
    return qFromBigEndian(readMemory<T>(bytes.constData() + at, bytes.size() - at));
}
