#include "fuzz/packets/PacketRules.h"

namespace {
template <typename Packet>
void check(const QByteArray& bytes)
{
    checkForms<Packet>(bytes);
    checkRules(Packet(bytes), bytes);
}
} // namespace

/// A packet of one class: the first byte says of which.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr void (*checks[])(const QByteArray&) = {check<IPv4Packet>, check<ArpPacket>, check<IcmpPacket>,
                                                     check<UdpPacket>, check<DhcpPacket>};
    if (size > 0)
        checks[data[0] % std::size(checks)](viewOf(data + 1, size - 1));
    return 0;
}
