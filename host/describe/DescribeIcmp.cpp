#include "host/describe/FieldSink.h"
#include "host/describe/Layers.h"
#include "host/describe/Summary.h"
#include "packets/IcmpPacket.h"

#include <fmt/format.h>

namespace mesk::host {

void addFields(FieldSink& fields, const IcmpPacket& packet)
{
    addSizes(fields, packet);
    fields.number("length", packet.length());
    fields.flag("isValid", packet.isValid());
    fields.text("protocolName", viewOf(packet.protocolName()));
    fields.number("protocol", packet.protocol());
    fields.number("type", packet.type());
    fields.number("code", packet.code());
    fields.code("checksum", packet.checksum(), 4);
    fields.bytes("payload", viewOf(packet.payload()));
}

void summarize(Summary& summary, const IcmpPacket& packet)
{
    constexpr quint8 echoReply = 0;
    constexpr quint8 echoRequest = 8;
    summary.protocol = "ICMP";
    if (packet.type() == echoReply || packet.type() == echoRequest) {
        summary.info = fmt::format("echo {}, {} bytes", packet.type() == echoReply ? "reply" : "request",
                                   packet.payloadSize());
    } else {
        summary.info = fmt::format("type {} code {}", packet.type(), packet.code());
    }
}

std::string whyNotValid(const IcmpPacket& packet, std::string_view bytes)
{
    return bytes.size() < packet.headerSize()
               ? fmt::format("{} bytes are there, a header has {}", bytes.size(), packet.headerSize())
               : "";
}

} // namespace mesk::host
