#pragma once

#include "host/gvcp/GvcpClient.h"
#include "host/net/Holder.h"

#include <optional>

namespace mesk::host {

/// What a verb needs that asks one device.
class DeviceAccess {
public:
    /// @param device nothing for the one that answers a discovery.
    /// @throws Failure if none answers, or several do.
    DeviceAccess(Session& session, const std::optional<IpAddress>& device);

    GvcpClient& client() { return m_client; }
    std::string deviceText() const { return m_client.device().toStdString(); }

private:
    Holder m_holder;
    GvcpClient m_client;
};

} // namespace mesk::host
