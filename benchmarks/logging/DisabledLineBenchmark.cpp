#include "support/logging/Logger.h"
#include "support/logging/Logging.h"

#include <benchmark/benchmark.h>

namespace mesk::benchmarks {

using kivo::tools::logging::Logger;
using kivo::tools::logging::Logging;

/// A call site as all of them are: the cached pointer is tested, then the level. Kept apart and not
/// inlined, so that its machine code can be looked at under this name.
__attribute__((noinline)) bool disabledLineCallSite(Logger*& cached)
{
    if (cached == nullptr) {
        cached = Logging::getLogger("benchmark");
    }
    return cached->isEnabled(4);
}

namespace {

void disabledLine(benchmark::State& state)
{
    Logger* logger = Logging::getLogger("benchmark");
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(disabledLineCallSite(logger));
    }
}
BENCHMARK(disabledLine);

} // namespace

} // namespace mesk::benchmarks
