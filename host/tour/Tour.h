#pragma once

#include "host/Failure.h"
#include "host/Table.h"
#include "host/verbs/PortStatistics.h"

#include <memory>
#include <vector>

namespace mesk::host {

class Session;

/// What became of a tour.
struct TourResult {
    Json steps = Json::array(); ///< each with step, result ("done", "skipped", "failed"), seconds, detail
    Json ports = Json::array(); ///< what the board has counted
    std::vector<PortStatistics> statistics;
    ExitCode code = ExitCode::Done;
    std::string failure; ///< of the step that failed
};

/// The main job, told step by step: brings a port up, gives the device at its far end a lease, finds it,
/// reads, writes, listens to it, and ends with the statistics. A step that fails ends the tour.
class Tour {
public:
    /// @param everyStep whether each step must work: with a device of the user's own, what it has no part
    /// in is skipped.
    Tour(Session& session, bool everyStep);
    ~Tour();
    Tour(const Tour&) = delete;
    Tour& operator=(const Tour&) = delete;

    TourResult run();

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::host
