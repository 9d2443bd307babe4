#include "host/BoardAccess.h"
#include "host/Port.h"
#include "host/ResetProgress.h"
#include "host/Session.h"
#include "host/Stopwatch.h"
#include "host/verbs/VerbTable.h"

#include <fmt/format.h>

#include <cmath>

namespace mesk::host {

namespace {

constexpr unsigned phyControlRegister = 0;
constexpr std::uint16_t phyControlReset = 0x8000; // IEEE 802.3 clause 22: the PHY clears it when it is done

class ResetPhyVerb : public Verb {
public:
    void declare(CLI::App& /*app*/) override {}

    ExitCode run(Session& session) override
    {
        const int board = session.options().board;
        const int number = session.options().port;
        Port& port = session.openPort();
        const Stopwatch watch;
        {
            const ResetProgress progress(session.board(), session.output(),
                                         fmt::format("Resetting PHY {} of board {}", number, board),
                                         pulseSteps + stepsPerPhy);
            port.resetPhy();
        }
        const double seconds = std::round(watch.seconds() * 100) / 100;
        Json reset = {{"board", board}, {"port", number}, {"seconds", seconds}};
        bool finished = true; // the plugin does not tell, so without a look at the PHY this is all there is
        if (const KivoBoardControl* control = session.board().control(); control != nullptr) {
            const std::uint16_t value = control->phyRegister(
                static_cast<std::uint32_t>(board), static_cast<std::uint32_t>(number), phyControlRegister);
            finished = (value & phyControlReset) == 0;
            reset["finished"] = finished;
        }
        const Json result = {{"resets", Json::array({reset})}};
        session.output().result(session.options().json ? reset : result, {"resets"});
        return finished ? ExitCode::Done : ExitCode::Nothing;
    }
};

} // namespace

std::unique_ptr<Verb> makeResetPhyVerb()
{
    return std::make_unique<ResetPhyVerb>();
}

} // namespace mesk::host
