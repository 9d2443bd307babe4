#include "gvcp/GVCPAckPacket.h"
#include "gvcp/GVCPDiscoveryAckPacket.h"
#include "host/Table.h"
#include "host/describe/FieldSink.h"
#include "host/describe/GvcpNames.h"
#include "host/describe/Layers.h"
#include "host/describe/Summary.h"
#include "packets/IpAddress.h"
#include "packets/MacAddress.h"

#include <fmt/format.h>

namespace mesk::host {

void addFields(FieldSink& fields, const GVCPAckPacket& packet)
{
    addSizes(fields, packet);
    fields.flag("isValid", packet.isValid());
    fields.flag("isCommand", packet.isCommand());
    fields.code("status", packet.status(), 4);
    fields.code("acknowledge", packet.acknowledge(), 4);
    fields.number("requestId", packet.requestId());
    fields.number("payloadLength", packet.payloadLength());
    fields.bytes("header", viewOf(packet.header()));
    fields.bytes("payload", viewOf(packet.payload()));
}

void summarize(Summary& summary, const GVCPAckPacket& packet)
{
    summary.protocol = "GVCP";
    summary.info = fmt::format("{} id {}, status 0x{:04x}, {} bytes", gvcpMessageName(packet.acknowledge()),
                               packet.requestId(), packet.status(), packet.payloadLength());
}

std::string whyNotValid(const GVCPAckPacket& packet, std::string_view bytes)
{
    if (packet.isValid()) {
        return "";
    }
    const std::string reason = gvcpLengthProblem(bytes);
    return reason.empty() ? "acknowledge id 0" : reason;
}

void addFields(FieldSink& fields, const GVCPDiscoveryAckPacket& packet)
{
    addFields(fields, static_cast<const GVCPAckPacket&>(packet));
    fields.number("specVersionMajor", packet.specVersionMajor());
    fields.number("specVersionMinor", packet.specVersionMinor());
    fields.code("deviceMode", packet.deviceMode(), 8);
    addMac(fields, "macAddress", packet.macAddress());
    fields.code("ipConfigOptions", packet.ipConfigOptions(), 8);
    fields.code("ipConfigCurrent", packet.ipConfigCurrent(), 8);
    fields.text("currentIp", packet.currentIp().toStdString());
    fields.code("subnetMask", packet.subnetMask(), 8);
    fields.text("defaultGateway", packet.defaultGateway().toStdString());
    fields.text("manufacturerName", viewOf(packet.manufacturerName()));
    fields.text("modelName", viewOf(packet.modelName()));
    fields.text("deviceVersion", viewOf(packet.deviceVersion()));
    fields.text("manufacturerInfo", viewOf(packet.manufacturerInfo()));
    fields.text("serialNumber", viewOf(packet.serialNumber()));
    fields.text("userName", viewOf(packet.userName()));
}

void summarize(Summary& summary, const GVCPDiscoveryAckPacket& packet)
{
    summary.protocol = "GVCP";
    summary.info = fmt::format("{} id {}, {} {} at {}", gvcpMessageName(packet.acknowledge()),
                               packet.requestId(), printable(packet.manufacturerName().toStdString()),
                               printable(packet.modelName().toStdString()), packet.currentIp().toStdString());
}

} // namespace mesk::host
