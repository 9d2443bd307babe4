#include "host/CommandLine.h"
#include "host/Interrupt.h"
#include "host/PortEvents.h"
#include "host/Session.h"
#include "host/Stopwatch.h"
#include "host/verbs/VerbTable.h"
#include "support/platform/os/Clock.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <limits>

namespace mesk::host {

namespace os = kivo::templates::platform::os;

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
        PortEvents events(session.openPort());
        const Stopwatch watch;
        std::uint64_t count = 0;
        bool taken = true;
        while (taken && !interruptRequested() && watch.seconds() < m_seconds) {
            if (const auto event = events.take()) {
                ++count;
                taken = session.output().record({{"number", count},
                                                 {"seconds", watch.roundedSeconds()},
                                                 {"type", event->type},
                                                 {"name", event->name},
                                                 {"count", event->count}},
                                                columnWidths);
            } else {
                os::sleepMs(lookPauseMs);
            }
        }
        session.output().words(fmt::format("{} events in {:.1f} s", count, watch.seconds()));
        return count != 0 ? ExitCode::Done : ExitCode::Nothing;
    }

private:
    double m_seconds = std::numeric_limits<double>::infinity();
};

} // namespace

std::unique_ptr<Verb> makeEventsVerb()
{
    return std::make_unique<EventsVerb>();
}

} // namespace mesk::host
