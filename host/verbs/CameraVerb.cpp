#include "host/OutgoingFrame.h"
#include "host/Port.h"
#include "host/Session.h"
#include "host/Stopwatch.h"
#include "host/gvcp/GvcpStatus.h"
#include "host/net/PortLoop.h"
#include "host/verbs/NetArguments.h"
#include "host/verbs/VerbTable.h"
#include "stand-ins/camera/CameraDevice.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <limits>

namespace mesk::host {

using emulated_camera::CameraCounters;
using emulated_camera::CameraDevice;
using emulated_camera::CameraSetup;

namespace {

const std::vector<std::size_t> columnWidths = {10, 7, 30};

std::string addressText(const CameraDevice& device)
{
    const stack::NetAddress own = device.address();
    return own.isThere()
               ? fmt::format("{}/{} ({})", own.address.toStdString(), own.prefixBits, device.addressMethod())
               : "none";
}

std::string controlText(const CameraDevice& device)
{
    const auto application = device.controller();
    return application ? fmt::format("{}:{}", application->address.toStdString(), application->port) : "none";
}

Json statisticsOf(const CameraCounters& counters)
{
    Json statuses = Json::object();
    for (const auto& [status, count] : counters.acknowledges) {
        statuses[gvcpStatusText(status)] = count;
    }
    return {{"framesIn", counters.framesIn},
            {"framesOut", counters.framesOut},
            {"commands", counters.commands},
            {"ignored", counters.ignored},
            {"retransmissions", counters.retransmissions},
            {"pending", counters.pending},
            {"heartbeatsLost", counters.heartbeatsLost},
            {"actions", counters.actions},
            {"resends", counters.resends},
            {"events", counters.events},
            {"eventsRepeated", counters.eventsRepeated},
            {"eventsLost", counters.eventsLost},
            {"conflicts", counters.conflicts},
            {"acknowledges", statuses}};
}

/// "framesIn: 12", a line each.
std::vector<std::string> linesOf(const Json& statistics)
{
    std::vector<std::string> lines;
    for (const auto& item : statistics.items()) {
        if (item.value().is_object()) {
            const std::vector<std::string> inner = linesOf(item.value());
            lines.insert(lines.end(), inner.begin(), inner.end());
        } else {
            lines.push_back(fmt::format("{}: {}", item.key(), item.value().dump()));
        }
    }
    return lines;
}

class CameraVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        app.add_option("SETUP", m_setupText,
                       "how it behaves, as behind 'camera:' of a link, like dhcp,events=2\n"
                       "(see docs/emulated-camera.md); --mac and --ip are the device's\n"
                       "(02:4b:00:00:00:20, 192.168.77.20/24)")
            ->type_name("TEXT");
        addSecondsOption(app, "--seconds", m_seconds, "end after S seconds; without: with Ctrl-C");
    }

    ExitCode run(Session& session) override
    {
        const CameraSetup setup = readSetup(session.options());
        Port& port = session.openPort();
        CameraDevice device(setup, [&port](const QByteArray& bytes) {
            const OutgoingFrame frame = prepareFrame(bytes);
            if (!frame.refused) {
                port.send(frame);
            }
        });
        PortLoop loop(
            port, [&device](const QByteArray& frame, stack::TimePoint now) { device.receive(frame, now); },
            [&device](stack::TimePoint now) { device.expire(now); });
        device.powerOn(loop.now());
        loop.serve(secondsAfter(loop.now(), m_seconds), [this, &session, &device](stack::TimePoint /*now*/) {
            return !showChanges(session.output(), device);
        });
        const CameraCounters counters = device.counters();
        const Json statistics = statisticsOf(counters);
        if (session.options().json) {
            session.output().record({{"statistics", statistics}}, {});
        }
        session.output().section("STATISTICS OF THE CAMERA", linesOf(statistics));
        return counters.commands != 0 ? ExitCode::Done : ExitCode::Nothing;
    }

private:
    CameraSetup readSetup(const Options& options) const
    {
        CameraSetup defaults;
        defaults.mac = options.mac.value_or(defaults.mac);
        defaults.persistentAddress = options.ip.value_or(defaults.persistentAddress);
        try {
            return emulated_camera::parseCameraSetup(m_setupText, defaults);
        } catch (const std::runtime_error& error) {
            throw Failure(ExitCode::Usage, fmt::format("SETUP: {}", error.what()));
        }
    }
    bool showChanges(Output& output, const CameraDevice& device)
    {
        return showChange(output, "address", m_address, addressText(device)) &&
               showChange(output, "control", m_control, controlText(device));
    }
    bool showChange(Output& output, const char* what, std::string& before, const std::string& now) const
    {
        if (before == now) {
            return true;
        }
        before = now;
        return output.record({{"seconds", m_watch.roundedSeconds()}, {"change", what}, {"value", now}},
                             columnWidths);
    }

    std::string m_setupText;
    double m_seconds = std::numeric_limits<double>::infinity();
    Stopwatch m_watch;
    std::string m_address = "none";
    std::string m_control = "none";
};

} // namespace

std::unique_ptr<Verb> makeCameraVerb()
{
    return std::make_unique<CameraVerb>();
}

} // namespace mesk::host
