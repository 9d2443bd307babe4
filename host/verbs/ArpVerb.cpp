#include "host/Session.h"
#include "host/net/Holder.h"
#include "host/verbs/NetArguments.h"
#include "host/verbs/VerbTable.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace mesk::host {

namespace {

constexpr unsigned probes = 3;
constexpr auto probeInterval = std::chrono::milliseconds(300);

class ArpVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        addIpAddress(app, "ADDRESS", m_address, "the address asked for")->required();
        app.add_flag("--probe", m_probe,
                     "ask without an address of one's own, as who looks for an address that is free");
    }

    ExitCode run(Session& session) override
    {
        Holder holder(session);
        ask(holder);
        Json owner = {{"address", m_address->toStdString()}, {"mac", nullptr}};
        if (m_owner) {
            owner["mac"] = m_owner->toStdString(":");
        } else {
            session.output().words(fmt::format("nobody has {}", m_address->toStdString()));
        }
        const Json table = {{"owners", m_owner ? Json::array({owner}) : Json::array()}};
        session.output().result(session.options().json ? owner : table, {"owners"});
        return m_owner ? ExitCode::Done : ExitCode::Nothing;
    }

private:
    void ask(Holder& holder)
    {
        bool ended = false;
        const auto resolved = [this, &ended](const std::optional<MacAddress>& mac, stack::TimePoint /*now*/) {
            m_owner = mac;
            ended = true;
        };
        const stack::TimePoint start = holder.loop().now();
        if (m_probe) {
            holder.node().probe(*m_address, probes, probeInterval, resolved, start);
        } else {
            holder.node().resolve(*m_address, resolved, start);
        }
        holder.loop().await(stack::never, [&ended](stack::TimePoint /*now*/) { return ended; });
    }

    std::optional<IpAddress> m_address;
    bool m_probe = false;
    std::optional<MacAddress> m_owner;
};

} // namespace

std::unique_ptr<Verb> makeArpVerb()
{
    return std::make_unique<ArpVerb>();
}

} // namespace mesk::host
