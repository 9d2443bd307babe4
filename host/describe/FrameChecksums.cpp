#include "host/describe/FrameChecksums.h"

#include "host/describe/Layers.h"
#include "packets/IPv4Packet.h"
#include "packets/IcmpPacket.h"
#include "packets/InternetChecksum.h"
#include "packets/UdpPacket.h"

#include <algorithm>

namespace mesk::host {

namespace {

constexpr std::size_t headerMinBytes = 20;
constexpr std::size_t totalLengthAt = 2;
constexpr std::size_t fragmentAt = 6;
constexpr unsigned fragmentBits = 0x3fff; // more fragments, and the offset
constexpr std::size_t protocolAt = 9;
constexpr std::size_t addressesAt = 12;
constexpr std::size_t addressesBytes = 8;
constexpr std::size_t icmpHeaderBytes = 4;
constexpr std::size_t udpHeaderBytes = 8;
constexpr std::size_t udpLengthAt = 4;
constexpr std::size_t udpChecksumAt = 6;

/// The sum over bytes with their checksum among them is all ones.
ChecksumState stateOf(quint64 sum)
{
    return foldedSum(sum) == 0xffff ? ChecksumState::Good : ChecksumState::Bad;
}

quint64 sumOf(std::string_view bytes)
{
    return sumOfWords(bytes.data(), bytes.size());
}

ChecksumState checkUdp(std::string_view datagram, std::string_view addresses)
{
    if (datagram.size() < udpHeaderBytes) {
        return ChecksumState::CutShort;
    }
    if (wordAt(datagram, udpChecksumAt) == 0) {
        return ChecksumState::Absent;
    }
    const std::size_t length = wordAt(datagram, udpLengthAt);
    if (length < udpHeaderBytes) {
        return ChecksumState::Bad; // the checksum itself isn't among so few bytes
    }
    if (length > datagram.size()) {
        return ChecksumState::CutShort;
    }
    return stateOf(sumOf(datagram.substr(0, length)) + sumOf(addresses) + UdpPacket::Protocol + length);
}

} // namespace

std::string_view nameOf(ChecksumState state)
{
    switch (state) {
    case ChecksumState::Good:
        return "good";
    case ChecksumState::Bad:
        return "bad";
    case ChecksumState::Absent:
        return "absent";
    case ChecksumState::CutShort:
        return "cut short";
    case ChecksumState::NotThere:
        break;
    }
    return "";
}

FrameChecksums checkIPv4(std::string_view packet)
{
    FrameChecksums checksums;
    const std::size_t headerBytes = (byteAt(packet, 0) & 0xf) * std::size_t{4};
    if (packet.size() < std::max(headerBytes, headerMinBytes)) {
        checksums.ipv4 = ChecksumState::CutShort;
        return checksums;
    }
    checksums.ipv4 = stateOf(sumOf(packet.substr(0, headerBytes)));

    const unsigned protocol = byteAt(packet, protocolAt);
    if (headerBytes < headerMinBytes ||
        (protocol != IcmpPacket::Protocol && protocol != UdpPacket::Protocol)) {
        return checksums;
    }
    ChecksumState& state = protocol == IcmpPacket::Protocol ? checksums.icmp : checksums.udp;
    // A length that can't be right stands for all that is there, as in the packet class.
    const std::size_t told = wordAt(packet, totalLengthAt);
    const std::size_t total = told < headerBytes ? packet.size() : told;
    if (total > packet.size() || (wordAt(packet, fragmentAt) & fragmentBits) != 0) {
        state = ChecksumState::CutShort;
        return checksums;
    }
    const std::string_view message = packet.substr(headerBytes, total - headerBytes);
    if (protocol == UdpPacket::Protocol) {
        state = checkUdp(message, packet.substr(addressesAt, addressesBytes));
    } else {
        state = message.size() < icmpHeaderBytes ? ChecksumState::CutShort : stateOf(sumOf(message));
    }
    return checksums;
}

} // namespace mesk::host
