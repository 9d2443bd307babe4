#include "host/BoardAccess.h"
#include "host/CaptureReader.h"
#include "host/Interrupt.h"
#include "host/OutgoingFrame.h"
#include "host/Port.h"
#include "host/Progress.h"
#include "host/RelayDirection.h"
#include "host/Session.h"
#include "host/verbs/PortCounters.h"
#include "host/verbs/PortStatistics.h"
#include "host/verbs/VerbTable.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <limits>
#include <thread>

namespace mesk::host {

namespace {

/// Sends the capture until its end, or until the direction or the user says stop.
void sendCapture(CaptureReader& reader, Port& port, RelayDirection& direction)
{
    try {
        QByteArray captured;
        while (!interruptRequested() && reader.next(captured)) {
            const OutgoingFrame frame = prepareFrame(captured);
            if (!direction.sending(frame)) {
                break;
            }
            if (!frame.refused) {
                port.send(frame);
            }
        }
        direction.senderDone("");
    } catch (const std::exception& error) {
        direction.senderDone(error.what());
    }
}

void receiveFrames(Port& port, RelayDirection& direction)
{
    while (!interruptRequested()) {
        if (const auto frame = port.receive()) {
            direction.arrived(*frame);
        } else if (direction.endedAtSilence()) {
            break;
        }
    }
    direction.stop();
}

Json recordOf(int from, int to, const RelayCounts& counts)
{
    return {{"from", from},
            {"to", to},
            {"sent", counts.sent},
            {"received", counts.received},
            {"bytes", counts.bytes},
            {"different", counts.different},
            {"filledUp", counts.filledUp},
            {"madeEven", counts.madeEven},
            {"refused", counts.refused},
            {"lost", counts.lost}};
}

class RelayVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        app.add_option("CAPTURE", m_capture, "pcap or pcapng file of Ethernet frames")
            ->required()
            ->check(CLI::ExistingFile.description(""));
        app.add_option("--to", m_to, "the other port of the board")
            ->required()
            ->check(CLI::Range(0, std::numeric_limits<int>::max()).description(""))
            ->type_name("PORT");
    }

    ExitCode run(Session& session) override
    {
        const int from = session.options().port;
        checkOptions(session.options());
        CaptureReader outwardCapture(m_capture);
        CaptureReader backwardCapture(m_capture);
        Port& fromPort = session.openPort(from);
        Port& toPort = session.openPort(m_to);
        if (session.board().control() != nullptr) {
            session.plug(from, fmt::format("pair:{}.{}", session.options().board, m_to));
        } else {
            session.output().words(fmt::format("Ports {} and {} must be joined by a cable", from, m_to));
        }

        auto progress = Progress::start(Progress::wanted(session.output()), [&outwardCapture] {
            return captureProgress("Relaying", outwardCapture);
        });
        RelayDirection outward;
        RelayDirection backward;
        std::thread threads[] = {
            std::thread([&] { receiveFrames(toPort, outward); }),
            std::thread([&] { receiveFrames(fromPort, backward); }),
            std::thread([&] { sendCapture(outwardCapture, fromPort, outward); }),
            std::thread([&] { sendCapture(backwardCapture, toPort, backward); }),
        };
        for (std::thread& thread : threads) {
            thread.join();
        }
        progress.reset();
        return report(session, outward, backward);
    }

private:
    void checkOptions(const Options& options) const
    {
        if (m_to == options.port) {
            throw Failure(ExitCode::Usage, fmt::format("--to {}: a port can't be joined to itself", m_to));
        }
        if (options.link) {
            throw Failure(ExitCode::Usage, "--link: this verb plugs its two ports to each other");
        }
    }
    ExitCode report(Session& session, const RelayDirection& outward, const RelayDirection& backward) const
    {
        const int from = session.options().port;
        const RelayCounts there = outward.counts();
        const RelayCounts back = backward.counts();
        const auto statistics = stopPorts(session);
        session.output().result(
            {{"capture", m_capture},
             {"board", session.options().board},
             {"directions", Json::array({recordOf(from, m_to, there), recordOf(m_to, from, back)})},
             {"ports", portCounters(session, {from, m_to})},
             {"statistics", textsOf(statistics)}},
            {"directions", "ports"});
        showStatistics(session, statistics);
        for (const RelayDirection* direction : {&outward, &backward}) {
            if (direction->gaveUp()) {
                session.output().words("Nothing arrives any more, the rest of the capture was not sent");
            }
        }
        if (const std::string damage = outward.error() + (outward.error().empty() ? backward.error() : "");
            !damage.empty()) {
            throw Failure(ExitCode::Nothing, damage);
        }
        return there.good() && back.good() ? ExitCode::Done : ExitCode::Nothing;
    }

    std::string m_capture;
    int m_to = 0;
};

} // namespace

std::unique_ptr<Verb> makeRelayVerb()
{
    return std::make_unique<RelayVerb>();
}

} // namespace mesk::host
