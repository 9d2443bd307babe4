#include "host/Interrupt.h"
#include "host/LogObserver.h"
#include "host/Port.h"
#include "host/Progress.h"
#include "host/Session.h"
#include "host/Stopwatch.h"
#include "host/verbs/PortStatistics.h"
#include "host/verbs/VerbTable.h"

namespace mesk::host {

namespace {

/// How long the plugin waits in a report: between its two looks at the registers, and, where a reset has
/// found the MDIO registers, at each of 29 PHY registers.
constexpr double registersSeconds = 1.0;
constexpr double phyDumpSeconds = 2.9;

class ReportVerb : public Verb {
public:
    void declare(CLI::App& /*app*/) override {}

    ExitCode run(Session& session) override
    {
        std::unique_ptr<LogObserver> observer = session.observeInterfaces(logLevelDetail);
        Port& port = session.openPort();
        if (interruptRequested()) {
            return ExitCode::Interrupted; // while a reset ran
        }
        observer->take(); // what opening has logged
        runReport(session, port);
        Json lines = Json::array();
        append(lines, session, port, observer->take());
        observer.reset();
        for (const PortStatistics& each : stopPorts(session)) {
            append(lines, session, port, each.lines);
        }
        session.output().result(
            {{"board", session.options().board}, {"port", port.number()}, {"lines", lines}}, {"lines"});
        return ExitCode::Done;
    }

private:
    static void runReport(Session& session, Port& port)
    {
        const Stopwatch watch;
        const double takes = registersSeconds + (session.options().reset ? phyDumpSeconds : 0);
        const auto progress = Progress::start(Progress::wanted(session.output()), [&watch, takes] {
            return progressBar("Reporting", watch.seconds() / takes);
        });
        port.debugOutput();
    }
    /// Lines as they are under --json, else what people want to read of them.
    static void append(Json& lines, const Session& session, const Port& port,
                       const std::vector<LogLine>& logged)
    {
        for (const LogLine& line : logged) {
            if (session.options().json) {
                lines.push_back({{"level", line.level}, {"logger", line.logger}, {"text", line.text}});
            } else {
                lines.push_back({{"level", line.level}, {"text", messageOf(line, port.id())}});
            }
        }
    }
};

} // namespace

std::unique_ptr<Verb> makeReportVerb()
{
    return std::make_unique<ReportVerb>();
}

} // namespace mesk::host
