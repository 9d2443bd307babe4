#include "benchmarks/Ratios.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>

namespace mesk::benchmarks {

namespace {

/// Shows what the console shows, and keeps the medians.
class MedianKeeper : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const auto& run : runs) {
            if (run.aggregate_name == "median") {
                m_medians[run.run_name.function_name +
                          (run.run_name.args.empty() ? "" : "/" + run.run_name.args)] =
                    run.run_name.time_type.empty() ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime();
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    const std::map<std::string, double>& medians() const { return m_medians; }

private:
    std::map<std::string, double> m_medians;
};

bool printRatio(const std::map<std::string, double>& medians, const Ratio& ratio)
{
    const auto work = medians.find(ratio.work);
    const auto yardstick = medians.find(ratio.yardstick);
    if (work == medians.end() || yardstick == medians.end()) {
        return true; // a filter left one of them out
    }
    const double value = work->second / yardstick->second;
    const bool within = value <= ratio.limit;
    std::printf("%-28s / %-28s %8.3f  (at most %g)%s\n", ratio.work.c_str(), ratio.yardstick.c_str(), value,
                ratio.limit, within ? "" : "  ABOVE");
    return within;
}

} // namespace

int runWithRatios(int argc, char** argv, const std::vector<Ratio>& ratios)
{
    std::vector<char*> arguments(argv, argv + argc);
    std::string repetitions = "--benchmark_repetitions=9";
    std::string aggregates = "--benchmark_report_aggregates_only=true";
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::string time = "--benchmark_min_time=0.05";
    arguments.insert(arguments.begin() + 1,
                     {repetitions.data(), aggregates.data(), interleaving.data(), time.data()});
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 2;
    }
    MedianKeeper reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf(
        "\nRatios of the medians (CPU time; where threads wait for each other, the time that passed):\n");
    bool within = true;
    for (const auto& ratio : ratios) {
        within = printRatio(reporter.medians(), ratio) && within;
    }
    return within ? 0 : 1;
}

} // namespace mesk::benchmarks
