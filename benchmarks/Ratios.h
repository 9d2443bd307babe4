#pragma once

#include <string>
#include <vector>

namespace mesk::benchmarks {

/// A figure that is kept: one benchmark's time against another's, both of the same run.
struct Ratio {
    std::string work;      ///< name of the benchmark
    std::string yardstick; ///< name of the benchmark that it is held against
    double limit;          ///< the ratio's upper limit
};

/// Runs the benchmarks, several times each and interleaved, and prints each ratio of the medians with its
/// limit.
/// @returns 0 if every ratio that was measured is within its limit, else 1.
int runWithRatios(int argc, char** argv, const std::vector<Ratio>& ratios);

} // namespace mesk::benchmarks
