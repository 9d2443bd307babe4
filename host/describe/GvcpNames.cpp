#include "host/describe/GvcpNames.h"

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
    {0x0002, "discovery command"},      {0x0003, "discovery acknowledge"},
    {0x0004, "force-IP command"},       {0x0005, "force-IP acknowledge"},
    {0x0040, "packet-resend command"},  {0x0041, "packet-resend acknowledge"},
    {0x0080, "read-register command"},  {0x0081, "read-register acknowledge"},
    {0x0082, "write-register command"}, {0x0083, "write-register acknowledge"},
    {0x0084, "read-memory command"},    {0x0085, "read-memory acknowledge"},
    {0x0086, "write-memory command"},   {0x0087, "write-memory acknowledge"},
    {0x0089, "pending acknowledge"},    {0x00c0, "event command"},
    {0x00c1, "event acknowledge"},      {0x00c2, "event-data command"},
    {0x00c3, "event-data acknowledge"}, {0x0100, "action command"},
    {0x0101, "action acknowledge"},
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
