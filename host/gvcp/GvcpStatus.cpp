#include "host/gvcp/GvcpStatus.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace mesk::host {

namespace {

struct StatusName {
    quint16 status;
    const char* name;
};

constexpr std::array<StatusName, 22> statusNames{{
    {GvcpStatus::Success, "success"},
    {GvcpStatus::NotImplemented, "not implemented"},
    {GvcpStatus::InvalidParameter, "invalid parameter"},
    {GvcpStatus::InvalidAddress, "invalid address"},
    {GvcpStatus::WriteProtect, "write-protected"},
    {GvcpStatus::BadAlignment, "bad alignment"},
    {GvcpStatus::AccessDenied, "access denied"},
    {GvcpStatus::Busy, "busy"},
    {0x8008, "local problem"},
    {0x8009, "messages don't match"},
    {0x800a, "protocol version not supported"},
    {0x800b, "no message"},
    {0x800c, "packet unavailable"},
    {0x800d, "data overrun"},
    {0x800e, "invalid header"},
    {0x800f, "wrong configuration"},
    {0x8010, "packet not yet available"},
    {0x8011, "packet and previous ones removed"},
    {0x8012, "packet removed"},
    {0x8013, "no reference time"},
    {0x8014, "packet temporarily unavailable"},
    {0x8fff, "error"},
}};

} // namespace

std::string gvcpStatusText(quint16 status)
{
    const auto* const found =
        std::find_if(statusNames.begin(), statusNames.end(),
                     [status](const StatusName& each) { return each.status == status; });
    return fmt::format("{} (0x{:04x})", found != statusNames.end() ? found->name : "unknown status", status);
}

} // namespace mesk::host
