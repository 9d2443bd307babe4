#pragma once

#include <cstdint>
#include <string_view>

namespace mesk::host {

/// What a look at a checksum has shown.
enum class ChecksumState : std::uint8_t {
    NotThere, ///< the frame has no such header
    Good,
    Bad,
    Absent,   ///< the sender has computed none
    CutShort, ///< not all that it covers is there: cut off, or in other fragments
};

/// Words for a state: "good", "bad", "absent", "cut short"; empty for NotThere.
std::string_view nameOf(ChecksumState state);

/// The checksums of one frame.
struct FrameChecksums {
    ChecksumState ipv4 = ChecksumState::NotThere;
    ChecksumState icmp = ChecksumState::NotThere;
    ChecksumState udp = ChecksumState::NotThere;

    bool anyBad() const
    {
        return ipv4 == ChecksumState::Bad || icmp == ChecksumState::Bad || udp == ChecksumState::Bad;
    }
};

/// Checks an IPv4 packet and the ICMP message or UDP datagram in it against their checksums (RFC 791, 792,
/// 768), which the packet classes don't. A UDP checksum with a length field below the header's 8, 0 as well,
/// is bad.
/// @param packet what stands behind the frame's header, with padding or without.
FrameChecksums checkIPv4(std::string_view packet);

} // namespace mesk::host
