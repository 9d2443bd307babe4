#include "host/verbs/PortCounters.h"

#include "host/BoardAccess.h"
#include "host/Session.h"

namespace mesk::host {

Json portCounters(Session& session, const std::vector<int>& ports)
{
    Json records = Json::array();
    const KivoBoardControl* control = session.board().control();
    for (const int port : ports) {
        KivoBoardPortCounters counters = {};
        if (control != nullptr && control->counters(static_cast<std::uint32_t>(session.options().board),
                                                    static_cast<std::uint32_t>(port), &counters) >= 0) {
            records.push_back({{"port", port},
                               {"framesSent", counters.framesSent},
                               {"framesReceived", counters.framesReceived},
                               {"framesDropped", counters.framesDropped},
                               {"crcErrors", counters.crcErrors}});
        }
    }
    return records;
}

} // namespace mesk::host
