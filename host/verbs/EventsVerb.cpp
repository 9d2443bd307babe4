#include "host/CommandLine.h"
#include "host/Interrupt.h"
#include "host/Port.h"
#include "host/Session.h"
#include "host/Stopwatch.h"
#include "host/verbs/VerbTable.h"
#include "interface/PhysicalNetworkInterfaceEventQueue.h"
#include "interface/PniActionCommandTimeout.h"
#include "support/platform/os/Clock.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <limits>

namespace mesk::host {

namespace os = kivo::templates::platform::os;
using kivo::core::mesk::PhysicalNetworkInterfaceEvent;
using kivo::core::mesk::PniActionCommandTimeout;

namespace {

constexpr std::uint32_t lookPauseMs = 20;
const std::vector<std::size_t> columnWidths = {6, 10, 4, 20, 5};

class EventsVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        app.add_option_function<std::string>(
               "--seconds", [this](const std::string& text) { m_seconds = parseSeconds("--seconds", text); },
               "end after S seconds; without: with Ctrl-C")
            ->type_name("S");
    }

    ExitCode run(Session& session) override
    {
        // The events and their queue are of the plugin's making: they end with this scope, before it does.
        const auto queue = session.openPort().eventQueue();
        const Stopwatch watch;
        queue->enabled = true;
        std::uint64_t events = 0;
        bool taken = true;
        while (taken && !interruptRequested() && watch.seconds() < m_seconds) {
            boost::shared_ptr<PhysicalNetworkInterfaceEvent> event;
            if (queue->queue->tryPop(event)) {
                ++events;
                taken = show(session.output(), events, watch.roundedSeconds(), *event);
            } else {
                os::sleepMs(lookPauseMs);
            }
        }
        session.output().words(fmt::format("{} events in {:.1f} s", events, watch.seconds()));
        return events != 0 ? ExitCode::Done : ExitCode::Nothing;
    }

private:
    static bool show(Output& output, std::uint64_t number, double seconds,
                     const PhysicalNetworkInterfaceEvent& event)
    {
        Json record = {{"number", number}, {"seconds", seconds}, {"type", event.type}};
        if (event.type == PniActionCommandTimeout::eventType) {
            record["name"] = "actionCommandTimeout";
            record["count"] = static_cast<const PniActionCommandTimeout&>(event).count;
        } else {
            record["name"] = "unknown";
            record["count"] = 0;
        }
        return output.record(record, columnWidths);
    }

    double m_seconds = std::numeric_limits<double>::infinity();
};

} // namespace

std::unique_ptr<Verb> makeEventsVerb()
{
    return std::make_unique<EventsVerb>();
}

} // namespace mesk::host
