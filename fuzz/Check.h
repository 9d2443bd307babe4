#pragma once

#include "host/describe/JsonFields.h"
#include "host/describe/Layers.h"
#include "packets/ByteSlice.h"
#include "packets/IpAddress.h"
#include "packets/TransportPacket.h"

#include <QtEndian>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

/// Throws where a property doesn't hold: that is what a fuzzer keeps an input for.
inline void require(bool holds, const char* property)
{
    if (!holds)
        throw std::logic_error(property);
}
inline void requireSame(const std::string& one, const std::string& other, const char* property)
{
    if (one != other)
        throw std::logic_error(property + (": " + one) + "\n" + other);
}

const IpAddress checkSource(0xc0a80001), checkDestination(0x0a0000fe);

template <typename Packet>
QByteArray bytesOf(const Packet& packet)
{
    if constexpr (std::is_base_of_v<TransportPacket, Packet>)
        return packet.serialize(checkSource, checkDestination);
    else
        return packet.serialize();
}

/// What all getters of a packet tell, and the bytes that it is written as.
template <typename Packet>
std::string told(const Packet& packet)
{
    fmt::memory_buffer text;
    mesk::host::JsonFields fields(text);
    fields.bytes("serialize", mesk::host::viewOf(bytesOf(packet)));
    addFields(fields, packet);
    return fmt::to_string(text);
}

inline QByteArray viewOf(const std::uint8_t* data, std::size_t size)
{
    return QByteArray::fromRawData(reinterpret_cast<const char*>(data), int(size));
}
/// The number of 16 bits in network byte order at a place that is there.
inline quint16 word(const QByteArray& bytes, int at)
{
    return qFromBigEndian<quint16>(bytes.mid(at, 2).constData());
}

/// Holds that a packet is the same whatever its bytes come in, and that its copy is the same.
template <typename Packet>
void checkForms(const QByteArray& bytes)
{
    const Packet packet(bytes);
    const std::string same = told(packet);
    requireSame(told(packet), same, "getters change nothing");
    requireSame(told(Packet(ByteSlice(bytes))), same, "a slice is parsed as an array is");
    requireSame(told(Packet(ByteSlice("before" + bytes + "behind").mid(6, bytes.size()))), same,
                "nothing around a slice is looked at");
    std::vector<char> memory(bytes.begin(), bytes.end());
    auto source = std::make_unique<Packet>(QByteArray::fromRawData(memory.data(), bytes.size()));
    std::fill(memory.begin(), memory.end(), '\xa5');
    requireSame(told(*source), same, "a packet outlives the memory that it was parsed from");
    memory = {};
    if constexpr (std::is_copy_constructible_v<Packet>) {
        const Packet copy(*source);
        source.reset();
        requireSame(told(copy), same, "a copy is its source and outlives it");
    }
}
