#pragma once

#include "host/net/Loop.h"
#include "stack/NetworkNode.h"

#include <vector>

namespace mesk::host {

/// Who an action command is for: devices act whose keys and mask fit (GigE Vision).
struct ActionKeys {
    quint32 device = 0;
    quint32 group = 0;
    quint32 groupMask = 0;
};

/// A device's answer to an action command.
struct ActionAnswer {
    IpAddress address;
    quint16 status = 0;
};

/// Sends an action command once, since a second one would be a second action, and collects what is
/// answered, up to devicesMax answers.
/// @param to a device, or a broadcast address.
/// @throws Interruption
std::vector<ActionAnswer> sendAction(stack::NetworkNode& node, Loop& loop, const IpAddress& to,
                                     const ActionKeys& keys, stack::Duration wait);

} // namespace mesk::host
