#include "host/describe/FieldSink.h"
#include "host/describe/Layers.h"
#include "host/describe/Summary.h"
#include "packets/IpAddress.h"
#include "packets/UdpPacket.h"

#include <fmt/format.h>

namespace mesk::host {

void addFields(FieldSink& fields, const UdpPacket& packet)
{
    addSizes(fields, packet);
    fields.number("length", packet.length());
    fields.flag("isValid", packet.isValid());
    fields.text("protocolName", viewOf(packet.protocolName()));
    fields.number("protocol", packet.protocol());
    fields.number("sourcePort", packet.sourcePort());
    fields.number("destinationPort", packet.destinationPort());
    fields.code("checksum", packet.checksum(IpAddress(), IpAddress()),
                4); // as received, whatever the addresses
    fields.bytes("payload", viewOf(packet.payload()));
}

void summarize(Summary& summary, const UdpPacket& packet)
{
    fmt::format_to(std::back_inserter(summary.source), ":{}", packet.sourcePort());
    fmt::format_to(std::back_inserter(summary.destination), ":{}", packet.destinationPort());
    summary.protocol = "UDP";
    summary.info = fmt::format("{} bytes", packet.payloadSize());
}

std::string whyNotValid(const UdpPacket& packet, std::string_view bytes)
{
    constexpr std::size_t lengthAt = 4;
    if (packet.isValid()) {
        return "";
    }
    if (bytes.size() < packet.headerSize()) {
        return fmt::format("{} bytes are there, a header has {}", bytes.size(), packet.headerSize());
    }
    const unsigned length = wordAt(bytes, lengthAt);
    if (length < packet.headerSize()) {
        return fmt::format("length field {}, the header alone has {}", length, packet.headerSize());
    }
    return fmt::format("length field {}, {} bytes are there", length, bytes.size());
}

} // namespace mesk::host
