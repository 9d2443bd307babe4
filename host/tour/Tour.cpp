#include "host/tour/Tour.h"

#include "host/BoardAccess.h"
#include "host/Port.h"
#include "host/PortEvents.h"
#include "host/Progress.h"
#include "host/Session.h"
#include "host/Stopwatch.h"
#include "host/gvcp/BootstrapRegister.h"
#include "host/gvcp/DeviceDescription.h"
#include "host/gvcp/DeviceDiscovery.h"
#include "host/gvcp/MessageChannel.h"
#include "host/net/Holder.h"
#include "host/net/Pinger.h"
#include "host/tour/LeasePool.h"
#include "host/verbs/PortCounters.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cmath>

namespace mesk::host {

using stack::DhcpServer;
using stack::TimePoint;

namespace {

constexpr auto leaseWait = std::chrono::seconds(5);
constexpr auto leaseTime = std::chrono::hours(1);
constexpr auto discoveryWait = std::chrono::seconds(1);
constexpr unsigned discoveries = 4;
constexpr auto eventWait = std::chrono::seconds(3);
constexpr auto pingInterval = std::chrono::milliseconds(100);
constexpr unsigned pings = 3;
constexpr quint32 triedHeartbeatMs = 5000, otherHeartbeatMs = 4000;
constexpr std::uint16_t actionCount = 7;

/// A step that the device at hand, or the board, has no part in.
class Skipped : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

Failure failed(const std::string& text)
{
    return {ExitCode::Nothing, text};
}

} // namespace

struct Tour::D {
    using Step = std::string (D::*)();
    struct Entry {
        const char* name;
        const char* words; ///< what is about to be done
        Step run;          ///< gives what came of it; throws Skipped, Failure
    };

    D(Session& given, bool every)
        : session(given)
        , everyStep(every)
    {
    }

    std::string bringUp();
    std::string giveLease();
    std::string discover();
    std::string readDescription();
    std::string takeControl();
    std::string tryRegister();
    std::string awaitEvent();
    std::string awaitActionTimeout();
    std::string ping();

    bool runStep(const Entry& entry, TourResult& result);
    void giveBack();
    /// Lets everything go on that was begun.
    bool await(stack::Duration wait, const std::function<bool()>& done);
    Failure orSkipped(const std::string& text) const;

    static const Entry entries[];

    Session& session;
    const bool everyStep;
    // Made one after the other, and gone in the opposite order.
    std::unique_ptr<Holder> holder;
    std::unique_ptr<DhcpServer> server;
    std::optional<DhcpServer::Lease> leased;
    std::unique_ptr<GvcpClient> client;
    std::unique_ptr<ControlPrivilege> control;
};

const Tour::D::Entry Tour::D::entries[] = {
    {"bring-up", "Bringing the port up, with its board's hardware reset", &D::bringUp},
    {"lease", "Giving a lease to who asks for an address", &D::giveLease},
    {"discovery", "Asking who is there", &D::discover},
    {"description", "Reading the device's description from its memory", &D::readDescription},
    {"control", "Taking control of the device", &D::takeControl},
    {"register", "Writing a register and reading it back", &D::tryRegister},
    {"event", "Opening the message channel and waiting for an event", &D::awaitEvent},
    {"action time-out", "Waiting for the event of an action command that times out", &D::awaitActionTimeout},
    {"ping", "Asking the device for echoes", &D::ping},
};

std::string Tour::D::bringUp()
{
    holder = std::make_unique<Holder>(session);
    return fmt::format("port {} of board {} is up as {}", session.options().port, session.options().board,
                       holder->node().address().address.toStdString());
}

std::string Tour::D::giveLease()
{
    const auto pool = leasePoolOf(holder->node().address());
    if (!pool) {
        throw orSkipped("the own net has no addresses to give");
    }
    DhcpServer::Events events;
    events.changed = [this](const DhcpServer::Lease& lease, TimePoint /*now*/) {
        if (lease.state == DhcpServer::LeaseState::Bound) {
            leased = lease;
        }
    };
    server = std::make_unique<DhcpServer>(holder->node(), *pool, leaseTime, events);
    if (!await(leaseWait, [this] { return leased.has_value(); })) {
        server.reset(); // a net that has no use for it is left alone
        throw orSkipped("nobody asked for an address");
    }
    return fmt::format("{} has {}", leased->client.toStdString(":"), leased->address.toStdString());
}

/// A device may need a moment between its lease and the use of it, so it is asked for several times.
std::string Tour::D::discover()
{
    for (unsigned tries = 0; tries < discoveries; ++tries) {
        for (const FoundDevice& each : discoverDevices(holder->node(), holder->loop(), discoveryWait, 1)) {
            if (each.address != IpAddress() && (!leased || each.mac == leased->client)) {
                client = std::make_unique<GvcpClient>(holder->node(), holder->loop(), each.address,
                                                      GvcpClient::Timing());
                return fmt::format("{} {}, serial {}, at {}", each.manufacturer, each.model, each.serial,
                                   each.address.toStdString());
            }
        }
    }
    throw failed("no device answers");
}

std::string Tour::D::readDescription()
{
    const DescriptionPlace place = findDescription(*client);
    std::atomic<quint32> done{0};
    const auto progress = Progress::start(Progress::wanted(session.output()), [&done, &place] {
        return progressBar("Reading", static_cast<double>(done) / place.sizeBytes);
    });
    const QByteArray file =
        client->readMemory(place.address, place.sizeBytes, [&done](quint32 bytes) { done = bytes; });
    const std::string head = fmt::format("{}, {} bytes", place.fileName, place.sizeBytes);
    const auto summary = summarizeDescription(file);
    if (!summary) {
        throw failed(head + ", but no whole XML document, nor an archive of one");
    }
    return fmt::format("{}, {} features of {}", head, summary->features, summary->modelName);
}

std::string Tour::D::takeControl()
{
    control = std::make_unique<ControlPrivilege>(*client);
    const quint32 privilege = client->readRegister(BootstrapRegister::ControlPrivilege);
    if ((privilege & controlAccess) == 0) {
        throw failed(fmt::format("the privilege was written, and reads 0x{:08x}", privilege));
    }
    return fmt::format("privilege 0x{:08x}", privilege);
}

std::string Tour::D::tryRegister()
{
    const quint32 before = client->readRegister(BootstrapRegister::HeartbeatTimeout);
    const quint32 tried = before != triedHeartbeatMs ? triedHeartbeatMs : otherHeartbeatMs;
    client->writeRegister(BootstrapRegister::HeartbeatTimeout, tried);
    const quint32 after = client->readRegister(BootstrapRegister::HeartbeatTimeout);
    client->writeRegister(BootstrapRegister::HeartbeatTimeout, before);
    if (after != tried) {
        throw failed(fmt::format("{} was written to the heartbeat time-out, it reads {}", tried, after));
    }
    return fmt::format("heartbeat time-out {} ms, {} ms for a moment", before, after);
}

std::string Tour::D::awaitEvent()
{
    if (client->readRegister(BootstrapRegister::MessageChannelCount) == 0) {
        throw orSkipped("the device has no message channel");
    }
    std::optional<DeviceEvent> first;
    const MessageChannel channel(holder->node(), *client, [&first](const DeviceEvent& event) {
        if (!first) {
            first = event;
        }
    });
    if (!await(eventWait, [&first] { return first.has_value(); })) {
        throw orSkipped("the device has told no event");
    }
    return fmt::format("event 0x{:04x} at {} ticks", first->id, first->timestamp);
}

std::string Tour::D::awaitActionTimeout()
{
    const KivoBoardControl* board = session.board().control();
    PortEvents events(holder->port());
    if (board == nullptr ||
        board->actionTimeout(static_cast<std::uint32_t>(session.options().board),
                             static_cast<std::uint32_t>(session.options().port), actionCount) < 0) {
        throw Skipped("this board times no action commands out at will");
    }
    std::optional<PortEvents::Event> event;
    const auto came = [&events, &event] {
        event = events.take();
        return event.has_value();
    };
    if (!await(eventWait, came)) {
        throw failed("no event in the port's queue");
    }
    if (event->count != actionCount) {
        throw failed(fmt::format("count {} instead of {}", event->count, actionCount));
    }
    return fmt::format("{}, count {}", event->name, event->count);
}

std::string Tour::D::ping()
{
    Pinger::Plan plan;
    plan.to = client->device();
    plan.count = pings;
    plan.interval = pingInterval;
    stack::Duration least = stack::Duration::max();
    Pinger pinger(holder->node(), plan,
                  [&least](const EchoAnswer& answer) { least = std::min(least, answer.time); });
    client->await(stack::never, [&pinger](TimePoint now) { return pinger.turn(now); });
    if (pinger.answered() == 0) {
        throw failed(fmt::format("none of {} echoes came back", pings));
    }
    return fmt::format("{} of {} echoes came back, the fastest in {:.3f} ms", pinger.answered(), pings,
                       std::chrono::duration<double, std::milli>(least).count());
}

bool Tour::D::runStep(const Entry& entry, TourResult& result)
{
    session.output().words(fmt::format("{} ...", entry.words));
    const Stopwatch watch;
    const auto note = [&](const char* how, const std::string& detail) {
        result.steps.push_back({{"step", entry.name},
                                {"result", how},
                                {"seconds", std::round(watch.seconds() * 100) / 100},
                                {"detail", detail}});
    };
    try {
        note("done", (this->*entry.run)());
    } catch (const Skipped& skipped) {
        note("skipped", skipped.what());
    } catch (const Failure& failure) {
        note("failed", failure.what());
        result.code = failure.code();
        result.failure = fmt::format("tour: the step '{}' failed: {}", entry.name, failure.what());
        return false;
    }
    return true;
}

void Tour::D::giveBack()
{
    control.reset();
    client.reset();
    server.reset();
}

bool Tour::D::await(stack::Duration wait, const std::function<bool()>& done)
{
    return holder->loop().await(holder->loop().now() + wait, [this, &done](TimePoint now) {
        if (server) {
            server->expire(now);
        }
        if (client) {
            client->keepControl(now);
        }
        return done();
    });
}

/// What may be missing at a device of the user's own. @throws Skipped where it is one.
Failure Tour::D::orSkipped(const std::string& text) const
{
    if (!everyStep) {
        throw Skipped(text);
    }
    return failed(text);
}

Tour::Tour(Session& session, bool everyStep)
    : d(std::make_unique<D>(session, everyStep))
{
}

Tour::~Tour() = default;

TourResult Tour::run()
{
    TourResult result;
    for (const D::Entry& entry : D::entries) {
        if (!d->runStep(entry, result)) {
            break;
        }
    }
    d->giveBack();
    if (d->holder) {
        result.statistics = stopPorts(d->session);
        result.ports = portCounters(d->session, {d->session.options().port});
    }
    return result;
}

} // namespace mesk::host
