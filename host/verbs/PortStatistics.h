#pragma once

#include "host/LogObserver.h"
#include "host/Table.h"

#include <string>
#include <vector>

namespace mesk::host {

class Session;

/// What an interface has logged at its end.
struct PortStatistics {
    int port = 0;
    std::string id; ///< the interface's name
    std::vector<LogLine> lines;
};

/// Stops the open ports, which can do no more then. A session without a logging dispatcher has no
/// statistics: that is told in words, and the result is empty.
std::vector<PortStatistics> stopPorts(Session& session);

/// The whole texts of the lines, as an array.
Json textsOf(const std::vector<PortStatistics>& statistics);

/// A section for each port.
void showStatistics(Session& session, const std::vector<PortStatistics>& statistics);

} // namespace mesk::host
