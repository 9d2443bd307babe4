#include "host/Session.h"
#include "host/gvcp/DeviceDiscovery.h"
#include "host/net/Holder.h"
#include "host/verbs/NetArguments.h"
#include "host/verbs/VerbTable.h"

#include <fmt/format.h>

namespace mesk::host {

namespace {

class DiscoverVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        addSecondsOption(app, "--wait", m_wait, "how long answers are waited for (1)");
    }

    ExitCode run(Session& session) override
    {
        Holder holder(session);
        Json devices = Json::array();
        const auto wait = secondsAfter(stack::TimePoint(), m_wait).time_since_epoch();
        for (const FoundDevice& each : discoverDevices(holder.node(), holder.loop(), wait)) {
            devices.push_back({{"address", each.address.toStdString()},
                               {"mac", each.mac.toStdString(":")},
                               {"manufacturer", each.manufacturer},
                               {"model", each.model},
                               {"version", each.version},
                               {"serial", each.serial},
                               {"name", each.name}});
        }
        const bool found = !devices.empty();
        if (!found) {
            const stack::NetAddress own = session.options().ownAddress();
            session.output().words(fmt::format("no device answers {}/{} (--ip sets the own address)",
                                               own.address.toStdString(), own.prefixBits));
        }
        if (devices.size() == devicesMax) {
            session.output().words(fmt::format("no more than the first {} devices are shown", devicesMax));
        }
        session.output().result({{"devices", std::move(devices)}}, {"devices"});
        return found ? ExitCode::Done : ExitCode::Nothing;
    }

private:
    double m_wait = 1;
};

} // namespace

std::unique_ptr<Verb> makeDiscoverVerb()
{
    return std::make_unique<DiscoverVerb>();
}

} // namespace mesk::host
