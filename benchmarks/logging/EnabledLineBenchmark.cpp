#include "interface/LogLine.h"
#include "support/logging/Logging.h"

#include <benchmark/benchmark.h>

#include <sstream>

namespace mesk::benchmarks {

namespace {

const std::string portName = "board 0 port 1";

/// A line of the interface, into a dispatcher that drops it.
void enabledLine(benchmark::State& state)
{
    using namespace kivo::core::mesk;
    auto& logger = *kivo::tools::logging::Logging::getLogger("benchmark.enabled");
    std::uint64_t number = 123456;
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(number);
        logPhyLine(logger, levelInformation, portName, "': Send - ", number, " frames (", number, " bytes)");
    }
    if (!logger.isEnabled(levelInformation)) {
        state.SkipWithError("no dispatcher");
    }
}

/// The same text, for nobody.
void textInStringStream(benchmark::State& state)
{
    std::uint64_t number = 123456;
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(number);
        std::ostringstream text;
        text << "thread-id=" << kivo::templates::platform::os::currentThreadId() << '|' << "PHY Id '"
             << portName << "': Send - " << number << " frames (" << number << " bytes)";
        benchmark::DoNotOptimize(text.str());
    }
}

BENCHMARK(enabledLine);
BENCHMARK(textInStringStream);

} // namespace

} // namespace mesk::benchmarks
