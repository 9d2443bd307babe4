#include "host/describe/FieldSink.h"
#include "host/describe/Layers.h"
#include "host/describe/Summary.h"
#include "packets/ArpPacket.h"
#include "packets/IpAddress.h"
#include "packets/MacAddress.h"

#include <fmt/format.h>

namespace mesk::host {

void addFields(FieldSink& fields, const ArpPacket& packet)
{
    addSizes(fields, packet);
    fields.code("etherType", packet.etherType(), 4);
    fields.number("protocol", packet.protocol());
    fields.number("lengthField", packet.lengthField());
    fields.number("operation", packet.operation());
    fields.number("hardwareAddressSize", packet.hardwareAddressSize());
    fields.number("protocolAddressSize", packet.protocolAddressSize());
    addMac(fields, "senderMacAddress", packet.senderMacAddress());
    fields.text("sourceAddress", packet.sourceAddress().toStdString());
    addMac(fields, "targetMacAddress", packet.targetMacAddress());
    fields.text("destinationAddress", packet.destinationAddress().toStdString());
    fields.bytes("payload", viewOf(packet.payload()));
}

void summarize(Summary& summary, const ArpPacket& packet)
{
    constexpr quint16 request = 1;
    constexpr quint16 reply = 2;
    summary.protocol = "ARP";
    const std::string sender = packet.sourceAddress().toStdString();
    if (packet.operation() == request) {
        summary.info = fmt::format("who has {}, tell {}", packet.destinationAddress().toStdString(), sender);
    } else if (packet.operation() == reply) {
        summary.info = fmt::format("{} is at {}", sender, packet.senderMacAddress().toStdString(":"));
    } else {
        summary.info = fmt::format("operation {}", packet.operation());
    }
}

std::string whyNotValid(const ArpPacket& /*packet*/, std::string_view bytes)
{
    constexpr std::size_t messageBytes = 28;
    constexpr unsigned ethernet = 1;
    constexpr unsigned ipv4 = 0x0800;
    constexpr unsigned hardwareAddressBytes = 6;
    constexpr unsigned protocolAddressBytes = 4;
    if (bytes.size() < messageBytes) {
        return fmt::format("{} bytes are there, a message has {}", bytes.size(), messageBytes);
    }
    if (wordAt(bytes, 0) != ethernet) {
        return fmt::format("hardware type {}, not {}", wordAt(bytes, 0), ethernet);
    }
    if (wordAt(bytes, 2) != ipv4) {
        return fmt::format("protocol type 0x{:04x}, not 0x{:04x}", wordAt(bytes, 2), ipv4);
    }
    if (byteAt(bytes, 4) != hardwareAddressBytes || byteAt(bytes, 5) != protocolAddressBytes) {
        return fmt::format("address sizes {} and {}, not {} and {}", byteAt(bytes, 4), byteAt(bytes, 5),
                           hardwareAddressBytes, protocolAddressBytes);
    }
    return "";
}

} // namespace mesk::host
