#include "host/Session.h"
#include "host/net/Holder.h"
#include "host/net/Pinger.h"
#include "host/verbs/NetArguments.h"
#include "host/verbs/VerbTable.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace mesk::host {

namespace {

const std::vector<std::size_t> columnWidths = {8, 5, 12};
constexpr int countMax = 65535; // of the field for the sequence number

double milliseconds(stack::Duration time)
{
    constexpr double perMillisecond = 1000;
    return std::round(std::chrono::duration<double, std::micro>(time).count()) / perMillisecond;
}

class PingVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        addIpAddress(app, "ADDRESS", m_address, "who is asked")->required();
        app.add_option("--count", m_plan.count, "end after N requests (4)")
            ->check(CLI::Range(1, countMax).description(""))
            ->type_name("N");
        app.add_option("--size", m_plan.sizeBytes, "bytes of data (56)")
            ->check(CLI::Range(0, stack::NetworkNode::datagramSizeMaxBytes).description(""))
            ->type_name("N");
        addSecondsOption(app, "--interval", m_interval, "from request to request (1)");
    }

    ExitCode run(Session& session) override
    {
        Holder holder(session);
        m_plan.to = *m_address;
        m_plan.interval = secondsAfter(stack::TimePoint(), m_interval).time_since_epoch();
        Pinger pinger(holder.node(), m_plan,
                      [this, &session](const EchoAnswer& answer) { take(session, answer); });
        holder.loop().serve(stack::never, [&pinger](stack::TimePoint now) { return pinger.turn(now); });
        show(session, pinger);
        return pinger.answered() != 0 ? ExitCode::Done : ExitCode::Nothing;
    }

private:
    void take(Session& session, const EchoAnswer& answer)
    {
        const double time = milliseconds(answer.time);
        m_times.push_back(time);
        const Json record = {{"sequence", answer.sequence}, {"bytes", answer.bytes}, {"milliseconds", time}};
        if (session.options().json) {
            m_replies.push_back(record);
        } else {
            session.output().record(record, columnWidths);
        }
    }
    void show(Session& session, const Pinger& pinger)
    {
        const unsigned sent = pinger.sent();
        const double loss = sent == 0 ? 0 : 100.0 * (sent - pinger.answered()) / sent;
        Json result = {{"address", m_address->toStdString()}, {"sent", sent},
                       {"received", pinger.answered()},       {"duplicates", pinger.duplicates()},
                       {"damaged", pinger.damaged()},         {"lossPercent", loss}};
        std::vector<std::string> lines = {
            fmt::format("{} sent, {} received, {:.0f} % lost", sent, pinger.answered(), loss)};
        if (pinger.duplicates() != 0 || pinger.damaged() != 0) {
            lines.push_back(
                fmt::format("{} came twice, {} with other data", pinger.duplicates(), pinger.damaged()));
        }
        if (!m_times.empty()) {
            const auto [least, most] = std::minmax_element(m_times.begin(), m_times.end());
            const double mean =
                std::accumulate(m_times.begin(), m_times.end(), 0.0) / static_cast<double>(m_times.size());
            result["milliseconds"] = {{"least", *least}, {"mean", mean}, {"most", *most}};
            lines.push_back(
                fmt::format("{:.3f} ms least, {:.3f} ms mean, {:.3f} ms most", *least, mean, *most));
        }
        result["replies"] = m_replies;
        session.output().section("ECHO OF " + m_address->toStdString(), lines);
        if (session.options().json) {
            session.output().result(result, {});
        }
    }

    std::optional<IpAddress> m_address;
    Pinger::Plan m_plan;
    double m_interval = 1;
    std::vector<double> m_times;
    Json m_replies = Json::array();
};

} // namespace

std::unique_ptr<Verb> makePingVerb()
{
    return std::make_unique<PingVerb>();
}

} // namespace mesk::host
