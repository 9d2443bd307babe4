#pragma once

#include "host/Table.h"

#include <vector>

namespace mesk::host {

class Session;

/// What the emulated board has counted at some ports and at what they are plugged to, a record a port; empty
/// for a board that does not tell.
Json portCounters(Session& session, const std::vector<int>& ports);

} // namespace mesk::host
