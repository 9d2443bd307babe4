#include "host/BoardAccess.h"
#include "host/CommandLine.h"
#include "host/Interrupt.h"
#include "host/Port.h"
#include "host/Session.h"
#include "host/Stopwatch.h"
#include "host/verbs/PortStatistics.h"
#include "host/verbs/VerbTable.h"
#include "packets/EthernetFrame.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <limits>

namespace mesk::host {

namespace {

const std::vector<std::size_t> columnWidths = {6, 10, 5, 17, 17, 4};

class ReceiveVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        app.add_option("--count", m_count, "end after N frames")
            ->check(CLI::PositiveNumber.description(""))
            ->type_name("N");
        app.add_option_function<std::string>(
               "--seconds", [this](const std::string& text) { m_seconds = parseSeconds("--seconds", text); },
               "end after S seconds; without either: at the end of a file that is replayed, or with Ctrl-C")
            ->type_name("S");
    }

    ExitCode run(Session& session) override
    {
        m_json = session.options().json;
        Port& port = session.openPort();
        m_watch = Stopwatch();
        while (!interruptRequested() && m_frames < m_count && m_watch.seconds() < m_seconds) {
            const auto frame = port.receive();
            if (frame ? !show(session.output(), *frame) : replayIsOver(session)) {
                break;
            }
        }
        session.output().words(
            fmt::format("{} frames, {} bytes in {:.1f} s", m_frames, m_bytes, m_watch.seconds()));
        showEnd(session);
        return m_frames != 0 ? ExitCode::Done : ExitCode::Nothing;
    }

private:
    void showEnd(Session& session) const
    {
        const auto statistics = stopPorts(session);
        if (m_json && !statistics.empty()) {
            session.output().record({{"statistics", textsOf(statistics)}}, {});
        }
        showStatistics(session, statistics);
    }
    bool show(Output& output, const QByteArray& bytes)
    {
        const EthernetFrame frame(bytes);
        ++m_frames;
        m_bytes += static_cast<std::uint64_t>(bytes.size());
        Json record = {{"number", m_frames},
                       {"seconds", m_watch.roundedSeconds()},
                       {"bytes", bytes.size()},
                       {"destination", frame.destination().toStdString(":")},
                       {"source", frame.source().toStdString(":")},
                       {"type", fmt::format("{:04x}", frame.etherType())}};
        if (m_json) {
            record["data"] = bytes.toHex().toStdString(); // no table is wide enough
        }
        return output.record(record, columnWidths);
    }
    /// A replayed file has an end, which no wait could bring more from.
    static bool replayIsOver(Session& session)
    {
        const auto board = static_cast<std::uint32_t>(session.options().board);
        const auto port = static_cast<std::uint32_t>(session.options().port);
        const KivoBoardControl* control = session.board().control();
        return control != nullptr &&
               session.board().link(session.options().board, session.options().port).rfind("file:", 0) == 0 &&
               control->linkIdle(board, port) == 1 && control->queuedWords(board, port) == 0;
    }

    std::uint64_t m_count = std::numeric_limits<std::uint64_t>::max();
    double m_seconds = std::numeric_limits<double>::infinity();
    bool m_json = false;
    Stopwatch m_watch;
    std::uint64_t m_frames = 0;
    std::uint64_t m_bytes = 0;
};

} // namespace

std::unique_ptr<Verb> makeReceiveVerb()
{
    return std::make_unique<ReceiveVerb>();
}

} // namespace mesk::host
