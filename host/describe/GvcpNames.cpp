#include "host/describe/GvcpNames.h"

#include "gvcp/GVCPMessageCode.h"
#include "gvcp/GVCPPacket.h"
#include "host/describe/Layers.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace mesk::host {

namespace {

struct MessageName {
    quint16 code;
    std::string_view name;
};

constexpr std::array<MessageName, 21> messageNames = {{
    {GVCPMessageCode::DiscoveryCommand, "discovery command"},
    {GVCPMessageCode::DiscoveryAck, "discovery acknowledge"},
    {GVCPMessageCode::ForceIpCommand, "force-IP command"},
    {GVCPMessageCode::ForceIpAck, "force-IP acknowledge"},
    {GVCPMessageCode::PacketResendCommand, "packet-resend command"},
    {GVCPMessageCode::PacketResendAck, "packet-resend acknowledge"},
    {GVCPMessageCode::ReadRegisterCommand, "read-register command"},
    {GVCPMessageCode::ReadRegisterAck, "read-register acknowledge"},
    {GVCPMessageCode::WriteRegisterCommand, "write-register command"},
    {GVCPMessageCode::WriteRegisterAck, "write-register acknowledge"},
    {GVCPMessageCode::ReadMemoryCommand, "read-memory command"},
    {GVCPMessageCode::ReadMemoryAck, "read-memory acknowledge"},
    {GVCPMessageCode::WriteMemoryCommand, "write-memory command"},
    {GVCPMessageCode::WriteMemoryAck, "write-memory acknowledge"},
    {GVCPMessageCode::PendingAck, "pending acknowledge"},
    {GVCPMessageCode::EventCommand, "event command"},
    {GVCPMessageCode::EventAck, "event acknowledge"},
    {GVCPMessageCode::EventDataCommand, "event-data command"},
    {GVCPMessageCode::EventDataAck, "event-data acknowledge"},
    {GVCPMessageCode::ActionCommand, "action command"},
    {GVCPMessageCode::ActionAck, "action acknowledge"},
}};

} // namespace

std::string_view gvcpMessageName(quint16 code)
{
    const auto found = std::find_if(messageNames.begin(), messageNames.end(),
                                    [code](const MessageName& each) { return each.code == code; });
    return found != messageNames.end() ? found->name : "message";
}

std::string gvcpLengthProblem(std::string_view bytes)
{
    constexpr std::size_t lengthAt = 4;
    if (bytes.size() < GVCPPacket::HeaderSize) {
        return fmt::format("{} bytes are there, a header has {}", bytes.size(), GVCPPacket::HeaderSize);
    }
    const std::size_t behindHeader = bytes.size() - GVCPPacket::HeaderSize;
    const unsigned told = wordAt(bytes, lengthAt);
    return told != behindHeader
               ? fmt::format("length field {}, {} bytes follow the header", told, behindHeader)
               : "";
}

} // namespace mesk::host
