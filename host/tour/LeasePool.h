#pragma once

#include "stack/DhcpServer.h"

#include <optional>

namespace mesk::host {

/// Some addresses of a net that its owner can give away: the last ones of the net, without the own one and
/// what lies below it; nothing in a net that has none.
std::optional<stack::DhcpServer::Pool> leasePoolOf(const stack::NetAddress& own);

} // namespace mesk::host
