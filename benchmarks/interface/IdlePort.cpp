#include "benchmarks/interface/BenchPort.h"

#include <chrono>
#include <cstdio>
#include <sys/resource.h>
#include <thread>

namespace {

constexpr unsigned seconds = 10;
constexpr unsigned readsMin = 95;
constexpr unsigned readsMax = 105;

double cpuSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto inSeconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return inSeconds(usage.ru_utime) + inSeconds(usage.ru_stime);
}

} // namespace

/// What a port costs that nothing happens on, for 10 seconds.
int main()
{
    using namespace mesk::benchmarks;
    const auto port = openBenchPort();
    const auto reads = benchBoardFunction<BenchReportReads>("benchReportReads");
    port->startWorkers();
    const std::uint32_t readsBefore = reads();
    const double cpuBefore = cpuSeconds();
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    const std::uint32_t readsDone = reads() - readsBefore;
    const double cpu = cpuSeconds() - cpuBefore;
    port->requestStop();
    port->finish();
    const bool within = readsDone >= readsMin && readsDone <= readsMax;
    std::printf(
        "an idle port in %u s: %u reads of the action-timeout queue (%u to %u)%s, %.2f ms of CPU time "
        "(%.4f %%)\n",
        seconds, readsDone, readsMin, readsMax, within ? "" : "  OUTSIDE", cpu * 1e3, cpu / seconds * 100);
    return within ? 0 : 1;
}
