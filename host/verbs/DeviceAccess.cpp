#include "host/verbs/DeviceAccess.h"

#include "host/gvcp/DeviceDiscovery.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace mesk::host {

namespace {

constexpr auto discoveryWait = std::chrono::milliseconds(600);

IpAddress onlyDevice(Holder& holder)
{
    auto found = discoverDevices(holder.node(), holder.loop(), discoveryWait);
    const auto unusable = [](const FoundDevice& each) { return each.address == IpAddress(); };
    found.erase(std::remove_if(found.begin(), found.end(), unusable), found.end());
    if (found.empty()) {
        throw Failure(ExitCode::Nothing,
                      "no device answers a discovery (--device names one, --ip the own address)");
    }
    if (found.size() > 1) {
        std::vector<std::string> addresses;
        std::transform(found.begin(), found.end(), std::back_inserter(addresses),
                       [](const FoundDevice& each) { return each.address.toStdString(); });
        throw Failure(ExitCode::Usage, fmt::format("--device is needed, {} devices answer: {}", found.size(),
                                                   fmt::join(addresses, ", ")));
    }
    return found.front().address;
}

} // namespace

DeviceAccess::DeviceAccess(Session& session, const std::optional<IpAddress>& device)
    : m_holder(session)
    , m_client(m_holder.node(), m_holder.loop(), device ? *device : onlyDevice(m_holder), {})
{
}

} // namespace mesk::host
