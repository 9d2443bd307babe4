#include "host/describe/FieldSink.h"
#include "host/describe/Layers.h"
#include "host/describe/Summary.h"
#include "packets/DhcpPacket.h"
#include "packets/IpAddress.h"

#include <QtEndian>

#include <fmt/format.h>

#include <array>

namespace mesk::host {

namespace {

constexpr quint8 messageTypeOption = 53;

std::string_view messageTypeName(const DhcpPacket& packet)
{
    static constexpr std::array<std::string_view, 9> names = {
        "message", "discover", "offer", "request", "decline", "acknowledge", "refusal", "release", "inform"};
    const QByteArray value = packet.option(messageTypeOption);
    const unsigned type = value.size() == 1 ? byteAt(viewOf(value), 0) : 0;
    return names[type < names.size() ? type : 0];
}

} // namespace

void addFields(FieldSink& fields, const DhcpPacket& packet)
{
    addSizes(fields, packet);
    fields.flag("isValid", packet.isValid());
    fields.flag("isRequest", packet.isRequest());
    fields.code("xid", packet.xid(), 8);
    fields.code("flags", packet.flags(), 4);
    fields.text("ciaddr", packet.ciaddr().toStdString());
    fields.text("yiaddr", packet.yiaddr().toStdString());
    fields.text("giaddr", packet.giaddr().toStdString());
    fields.bytes("chaddr", viewOf(packet.chaddr()));
    fields.openList("options");
    const auto codes = packet.optionCodes();
    for (const quint8 code : codes) {
        fields.openItem();
        fields.number("code", code);
        fields.bytes("option", viewOf(packet.option(code)));
        fields.closeItem();
    }
    fields.closeList();
}

void summarize(Summary& summary, const DhcpPacket& packet)
{
    summary.protocol = "DHCP";
    summary.info = fmt::format("{} xid 0x{:08x}", messageTypeName(packet),
                               qFromBigEndian(packet.xid())); // as on the wire
    if (!packet.isRequest()) {
        summary.info += fmt::format(", {} for you", packet.yiaddr().toStdString());
    }
}

std::string whyNotValid(const DhcpPacket& packet, std::string_view bytes)
{
    constexpr std::size_t cookieAt = 236;
    constexpr std::size_t fixedBytes = cookieAt + 4;
    if (packet.isValid()) {
        return "";
    }
    if (bytes.size() < fixedBytes) {
        return fmt::format("{} bytes are there, a message has at least {}", bytes.size(), fixedBytes);
    }
    const unsigned op = byteAt(bytes, 0);
    if (op != 1 && op != 2) {
        return fmt::format("op {}, neither 1 nor 2", op);
    }
    if (byteAt(bytes, 1) != 1 || byteAt(bytes, 2) != 6) {
        return fmt::format("hardware type {} with addresses of {} bytes, not 1 with 6", byteAt(bytes, 1),
                           byteAt(bytes, 2));
    }
    return fmt::format("magic cookie {:04x}{:04x}, not 63825363", wordAt(bytes, cookieAt),
                       wordAt(bytes, cookieAt + 2));
}

} // namespace mesk::host
