#include "host/verbs/PortStatistics.h"

#include "host/Failure.h"
#include "host/Port.h"
#include "host/Session.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace mesk::host {

std::vector<PortStatistics> stopPorts(Session& session)
{
    std::unique_ptr<LogObserver> observer;
    try {
        observer = session.observeInterfaces(logLevelInformation);
    } catch (const Failure& failure) {
        session.output().words(fmt::format("No statistics: {}", failure.what()));
    }
    std::vector<PortStatistics> statistics;
    for (const auto& port : session.ports()) {
        port->stop();
        if (observer) {
            statistics.push_back({port->number(), port->id(), observer->take()});
        }
    }
    return statistics;
}

Json textsOf(const std::vector<PortStatistics>& statistics)
{
    Json texts = Json::array();
    for (const PortStatistics& each : statistics) {
        for (const LogLine& line : each.lines) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

void showStatistics(Session& session, const std::vector<PortStatistics>& statistics)
{
    for (const PortStatistics& each : statistics) {
        std::vector<std::string> messages;
        std::transform(each.lines.begin(), each.lines.end(), std::back_inserter(messages),
                       [&each](const LogLine& line) { return messageOf(line, each.id); });
        session.output().section(fmt::format("STATISTICS OF PORT {}", each.port), messages);
    }
}

} // namespace mesk::host
