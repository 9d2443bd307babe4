#include "host/describe/FieldSink.h"
#include "host/describe/Layers.h"
#include "host/describe/Summary.h"
#include "packets/IPv4Packet.h"
#include "packets/IpAddress.h"

#include <fmt/format.h>

namespace mesk::host {

void addFields(FieldSink& fields, const IPv4Packet& packet)
{
    addSizes(fields, packet);
    fields.code("etherType", packet.etherType(), 4);
    fields.number("protocol", packet.protocol());
    fields.text("sourceAddress", packet.sourceAddress().toStdString());
    fields.text("destinationAddress", packet.destinationAddress().toStdString());
    fields.number("lengthField", packet.lengthField());
    fields.bytes("payload", viewOf(packet.payload()));
}

void summarize(Summary& summary, const IPv4Packet& packet)
{
    summary.source = packet.sourceAddress().toStdString();
    summary.destination = packet.destinationAddress().toStdString();
    summary.protocol = "IPv4";
    summary.info = fmt::format("protocol {}", packet.protocol());
}

std::string whyNotValid(const IPv4Packet& packet, std::string_view bytes)
{
    constexpr unsigned version = 4;
    constexpr quint32 headerMinBytes = 20;
    constexpr std::size_t totalLengthAt = 2;
    if (bytes.size() < headerMinBytes) {
        return fmt::format("{} bytes are there, a header has at least {}", bytes.size(), headerMinBytes);
    }
    if (byteAt(bytes, 0) >> 4 != version) {
        return fmt::format("version {}, not {}", byteAt(bytes, 0) >> 4, version);
    }
    if (packet.headerSize() < headerMinBytes) {
        return fmt::format("header size {}, at least {}", packet.headerSize(), headerMinBytes);
    }
    const unsigned total = wordAt(bytes, totalLengthAt);
    if (total < packet.headerSize()) {
        return fmt::format("total length {}, the header alone has {}", total, packet.headerSize());
    }
    return total > bytes.size() ? fmt::format("total length {}, {} bytes are there", total, bytes.size())
                                : "";
}

} // namespace mesk::host
