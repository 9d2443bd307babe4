#include "host/verbs/PortCounters.h"

#include "host/BoardAccess.h"
#include "host/Session.h"

namespace mesk::host {

Json portCounters(Session& session, const std::vector<int>& ports)
{
    Json records = Json::array();
    const KivoBoardControl* control = session.board().control();
    const auto board = static_cast<std::uint32_t>(session.options().board);
    for (const int port : ports) {
        const auto number = static_cast<std::uint32_t>(port);
        KivoBoardPortCounters counters = {};
        KivoBoardLinkCounters link = {};
        if (control != nullptr && control->counters(board, number, &counters) >= 0 &&
            control->linkCounters(board, number, &link) >= 0) {
            records.push_back({{"port", port},
                               {"framesSent", counters.framesSent},
                               {"framesReceived", counters.framesReceived},
                               {"framesDropped", counters.framesDropped},
                               {"crcErrors", counters.crcErrors},
                               {"linkRefused", link.framesRefused},
                               {"linkLost", link.framesLost},
                               {"linkErrors", link.errors},
                               {"linkState", link.isUp != 0 ? "up" : std::string("gone: ") + link.reason}});
        }
    }
    return records;
}

} // namespace mesk::host
