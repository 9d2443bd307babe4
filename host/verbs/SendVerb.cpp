#include "host/CaptureReader.h"
#include "host/Interrupt.h"
#include "host/OutgoingFrame.h"
#include "host/Port.h"
#include "host/Progress.h"
#include "host/Session.h"
#include "host/verbs/PortCounters.h"
#include "host/verbs/PortStatistics.h"
#include "host/verbs/VerbTable.h"

#include <CLI/CLI.hpp>

namespace mesk::host {

namespace {

struct SendCounts {
    std::uint64_t sent = 0;
    std::uint64_t bytes = 0;
    std::uint64_t filledUp = 0;
    std::uint64_t madeEven = 0;
    std::uint64_t refused = 0;
};

class SendVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        app.add_option("CAPTURE", m_capture, "pcap or pcapng file of Ethernet frames, - for standard input")
            ->required();
    }

    ExitCode run(Session& session) override
    {
        CaptureReader reader(m_capture);
        Port& port = session.openPort();
        std::string damage;
        try {
            const auto progress = Progress::start(Progress::wanted(session.output()),
                                                  [&reader] { return captureProgress("Sending", reader); });
            sendAll(reader, port);
        } catch (const Failure& failure) {
            damage = failure.what(); // what was sent before is told all the same
        }
        print(session);
        if (!damage.empty()) {
            throw Failure(ExitCode::Nothing, damage);
        }
        return m_counts.sent == 0 || m_counts.refused != 0 ? ExitCode::Nothing : ExitCode::Done;
    }

private:
    void sendAll(CaptureReader& reader, Port& port)
    {
        QByteArray captured;
        while (!interruptRequested() && reader.next(captured)) {
            const OutgoingFrame frame = prepareFrame(captured);
            if (frame.refused) {
                ++m_counts.refused;
                continue;
            }
            port.send(frame);
            ++m_counts.sent;
            m_counts.bytes += static_cast<std::uint64_t>(frame.onWire().size());
            m_counts.filledUp += frame.filledUp ? 1 : 0;
            m_counts.madeEven += frame.madeEven ? 1 : 0;
        }
    }
    void print(Session& session)
    {
        const int port = session.options().port;
        const Json sent = {{"port", port},
                           {"sent", m_counts.sent},
                           {"bytes", m_counts.bytes},
                           {"filledUp", m_counts.filledUp},
                           {"madeEven", m_counts.madeEven},
                           {"refused", m_counts.refused}};
        const auto statistics = stopPorts(session);
        session.output().result({{"capture", m_capture},
                                 {"board", session.options().board},
                                 {"frames", Json::array({sent})},
                                 {"ports", portCounters(session, {port})},
                                 {"statistics", textsOf(statistics)}},
                                {"frames", "ports"});
        showStatistics(session, statistics);
    }

    std::string m_capture;
    SendCounts m_counts;
};

} // namespace

std::unique_ptr<Verb> makeSendVerb()
{
    return std::make_unique<SendVerb>();
}

} // namespace mesk::host
