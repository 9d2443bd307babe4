#include "host/Session.h"
#include "host/gvcp/ActionSender.h"
#include "host/gvcp/DeviceDiscovery.h"
#include "host/gvcp/GvcpStatus.h"
#include "host/net/Holder.h"
#include "host/verbs/NetArguments.h"
#include "host/verbs/VerbTable.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>

namespace mesk::host {

namespace {

constexpr auto startWait = std::chrono::milliseconds(600);

class ActionVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        addNumber(app, "--device-key", m_keys.device, "device key")->required();
        addNumber(app, "--group-key", m_keys.group, "group key")->required();
        addNumber(app, "--group-mask", m_keys.groupMask, "group mask")->required();
        addIpAddress(app, "--device", m_device, "to one device (all, by broadcast)");
        addSecondsOption(app, "--wait", m_wait, "how long answers are waited for (0.5)");
    }

    ExitCode run(Session& session) override
    {
        Holder holder(session);
        if (!m_device) {
            // A device that has just started hears no broadcast before it has its address.
            discoverDevices(holder.node(), holder.loop(), startWait, 1);
        }
        const auto wait = secondsAfter(stack::TimePoint(), m_wait).time_since_epoch();
        const std::vector<ActionAnswer> answers =
            sendAction(holder.node(), holder.loop(), m_device.value_or(IpAddress::broadcast()), m_keys, wait);
        Json devices = Json::array();
        for (const ActionAnswer& each : answers) {
            devices.push_back(
                {{"address", each.address.toStdString()}, {"status", gvcpStatusText(each.status)}});
        }
        if (answers.size() == devicesMax) {
            session.output().words(fmt::format("no more than the first {} answers are shown", devicesMax));
        }
        if (answers.empty()) {
            session.output().words(
                "no device acknowledges: it does if both keys are its own, and a bit of the mask");
        }
        session.output().result({{"deviceKey", hexText(m_keys.device)},
                                 {"groupKey", hexText(m_keys.group)},
                                 {"groupMask", hexText(m_keys.groupMask)},
                                 {"devices", std::move(devices)}},
                                {"devices"});
        const bool done = std::any_of(answers.begin(), answers.end(), [](const ActionAnswer& each) {
            return each.status == GvcpStatus::Success;
        });
        return done ? ExitCode::Done : ExitCode::Nothing;
    }

private:
    ActionKeys m_keys;
    std::optional<IpAddress> m_device;
    double m_wait = 0.5;
};

} // namespace

std::unique_ptr<Verb> makeActionVerb()
{
    return std::make_unique<ActionVerb>();
}

} // namespace mesk::host
