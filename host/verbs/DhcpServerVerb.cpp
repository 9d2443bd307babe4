#include "host/CommandLine.h"
#include "host/Session.h"
#include "host/Stopwatch.h"
#include "host/net/Holder.h"
#include "host/verbs/NetArguments.h"
#include "host/verbs/VerbTable.h"
#include "stack/DhcpServer.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <limits>

namespace mesk::host {

using stack::DhcpServer;

namespace {

const std::vector<std::size_t> columnWidths = {10, 8, 17, 15};
constexpr unsigned leaseSecondsMax = 7 * 24 * 3600;

const char* wordFor(DhcpServer::LeaseState state)
{
    switch (state) {
    case DhcpServer::LeaseState::Offered:
        return "offered";
    case DhcpServer::LeaseState::Bound:
        return "bound";
    case DhcpServer::LeaseState::Declined:
        return "declined";
    case DhcpServer::LeaseState::Released:
        return "released";
    }
    return "";
}

class DhcpServerVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        app.add_option_function<std::string>(
               "--pool", [this](const std::string& text) { m_pool = parsePool(text); },
               "addresses that are given, both ends among them, like 192.168.77.100-192.168.77.120")
            ->required()
            ->type_name("FIRST-LAST");
        app.add_option("--lease-seconds", m_leaseSeconds, "how long a lease lasts (3600)")
            ->check(CLI::Range(1U, leaseSecondsMax).description(""))
            ->type_name("N");
        addSecondsOption(app, "--seconds", m_seconds, "end after S seconds; without: with Ctrl-C");
    }

    ExitCode run(Session& session) override
    {
        requireOwnNet(session.options().ownAddress());
        Holder holder(session);
        DhcpServer::Events events;
        events.changed = [this, &session](const DhcpServer::Lease& lease, stack::TimePoint /*now*/) {
            m_given += lease.state == DhcpServer::LeaseState::Bound ? 1 : 0;
            show(session.output(), wordFor(lease.state), lease.client, lease.address);
        };
        events.refused = [this, &session](const MacAddress& client, const IpAddress& asked,
                                          stack::TimePoint /*now*/) {
            show(session.output(), "refused", client, asked);
        };
        DhcpServer server(holder.node(), m_pool, std::chrono::seconds(m_leaseSeconds), events);
        session.output().words("Waiting for who asks for an address ...");
        holder.loop().serve(secondsAfter(holder.loop().now(), m_seconds),
                            [this, &server](stack::TimePoint now) {
                                server.expire(now);
                                return m_readerGone;
                            });
        session.output().words(
            fmt::format("{} leases given or renewed in {:.1f} s", m_given, m_watch.seconds()));
        return m_given != 0 ? ExitCode::Done : ExitCode::Nothing;
    }

private:
    static DhcpServer::Pool parsePool(const std::string& text)
    {
        const std::size_t dash = text.find('-');
        const auto first = parseIpAddress(text.substr(0, dash));
        const auto last = parseIpAddress(dash != std::string::npos ? text.substr(dash + 1) : "");
        if (!first || !last || first->toUInt32() > last->toUInt32()) {
            throw CLI::ValidationError(
                "--pool", "'" + text + "' is no pair of addresses like 192.168.77.100-192.168.77.120");
        }
        return {*first, *last};
    }
    /// Leases of another net would be of no use to who gets them.
    void requireOwnNet(const stack::NetAddress& own) const
    {
        const quint32 address = own.address.toUInt32();
        const bool fits = own.contains(m_pool.first) && own.contains(m_pool.last) &&
                          own.broadcast().toUInt32() > m_pool.last.toUInt32() &&
                          (own.address.toUInt32() & own.mask().toUInt32()) < m_pool.first.toUInt32();
        if (!fits) {
            throw Failure(ExitCode::Usage, fmt::format("--pool: not all of it are addresses of the net {}/{}",
                                                       own.address.toStdString(), own.prefixBits));
        }
        if (m_pool.first.toUInt32() <= address && address <= m_pool.last.toUInt32()) {
            throw Failure(ExitCode::Usage, fmt::format("--pool: the server's own address {} is in it",
                                                       own.address.toStdString()));
        }
    }
    void show(Output& output, const char* change, const MacAddress& client, const IpAddress& address)
    {
        m_readerGone = !output.record({{"seconds", m_watch.roundedSeconds()},
                                       {"change", change},
                                       {"client", client.toStdString(":")},
                                       {"address", address.toStdString()}},
                                      columnWidths);
    }

    DhcpServer::Pool m_pool;
    unsigned m_leaseSeconds = 3600;
    double m_seconds = std::numeric_limits<double>::infinity();
    Stopwatch m_watch;
    unsigned m_given = 0;
    bool m_readerGone = false;
};

} // namespace

std::unique_ptr<Verb> makeDhcpServerVerb()
{
    return std::make_unique<DhcpServerVerb>();
}

} // namespace mesk::host
