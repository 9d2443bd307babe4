#include "host/Session.h"
#include "host/Stopwatch.h"
#include "host/net/Holder.h"
#include "host/verbs/NetArguments.h"
#include "host/verbs/VerbTable.h"
#include "stack/DhcpClient.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <limits>
#include <random>

namespace mesk::host {

using stack::DhcpClient;

namespace {

const std::vector<std::size_t> columnWidths = {10, 8, 18, 15, 15, 12};

class DhcpClientVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        app.add_flag("--once", m_once, "end as soon as there is a lease");
        addSecondsOption(app, "--seconds", m_seconds,
                         "end after S seconds; without: with Ctrl-C, and with --once after 30");
        addSecondsOption(app, "--renew-after", m_renewAfter,
                         "renew a lease S seconds after it came (half of its time)");
        app.add_flag("--release", m_release, "give the lease back at the end");
    }

    ExitCode run(Session& session) override
    {
        Holder holder(session);
        holder.node().setAddress({}); // --ip is for who has an address
        DhcpClient client(holder.node(), {}, events(session.output()), std::random_device{}());
        holder.node().onConflict(
            [&session, &holder, &client](const MacAddress& who, bool isDefended, stack::TimePoint now) {
                session.output().words(fmt::format("{} uses the address {} as well", who.toStdString(":"),
                                                   holder.node().address().address.toStdString()));
                if (!isDefended)
                    client.decline(now);
            });
        const stack::TimePoint start = holder.loop().now();
        session.output().words("Asking for an address ...");
        client.start(start);
        holder.loop().serve(secondsAfter(start, limit()),
                            [this, &client](stack::TimePoint now) { return turn(client, now); });
        if (m_release && client.lease()) {
            const IpAddress address = client.lease()->address.address;
            client.release(holder.loop().now());
            show(session.output(), "released", {address, 0}, nullptr);
        }
        return m_bound ? ExitCode::Done : ExitCode::Nothing;
    }

private:
    double limit() const
    {
        constexpr double onceSeconds = 30;
        return m_once && !(m_seconds < std::numeric_limits<double>::infinity()) ? onceSeconds : m_seconds;
    }
    bool turn(DhcpClient& client, stack::TimePoint now)
    {
        client.expire(now);
        if (now >= m_renewAt && client.state() == DhcpClient::State::Bound) {
            m_renewAt = stack::never;
            client.renew(now);
        }
        return m_readerGone || (m_once && m_bound);
    }
    DhcpClient::Events events(Output& output)
    {
        DhcpClient::Events events;
        events.bound = [this, &output](const stack::DhcpLease& lease, stack::TimePoint now) {
            show(output, m_bound ? "renewed" : "bound", lease.address, &lease);
            m_bound = true;
            m_renewAt = secondsAfter(now, m_renewAfter);
        };
        events.lost = [this, &output](stack::TimePoint /*now*/) {
            show(output, "lost", {}, nullptr);
            m_bound = false;
        };
        events.declined = [this, &output](const IpAddress& address, stack::TimePoint /*now*/) {
            show(output, "declined", {address, 0}, nullptr);
        };
        events.refused = [this, &output](stack::TimePoint /*now*/) { show(output, "refused", {}, nullptr); };
        return events;
    }
    /// @param lease null where there is none.
    void show(Output& output, const char* change, const stack::NetAddress& address,
              const stack::DhcpLease* lease)
    {
        const std::string text = address.prefixBits != 0
                                     ? fmt::format("{}/{}", address.address.toStdString(), address.prefixBits)
                                     : address.address.toStdString();
        m_readerGone = !output.record(
            {{"seconds", m_watch.roundedSeconds()},
             {"change", change},
             {"address", text},
             {"router", lease != nullptr ? lease->router.toStdString() : ""},
             {"server", lease != nullptr ? lease->server.toStdString() : ""},
             {"leaseSeconds", lease != nullptr ? static_cast<std::int64_t>(lease->time.count()) : 0}},
            columnWidths);
    }

    bool m_once = false;
    bool m_release = false;
    double m_seconds = std::numeric_limits<double>::infinity();
    double m_renewAfter = std::numeric_limits<double>::infinity();
    Stopwatch m_watch;
    stack::TimePoint m_renewAt = stack::never;
    bool m_bound = false;
    bool m_readerGone = false;
};

} // namespace

std::unique_ptr<Verb> makeDhcpClientVerb()
{
    return std::make_unique<DhcpClientVerb>();
}

} // namespace mesk::host
