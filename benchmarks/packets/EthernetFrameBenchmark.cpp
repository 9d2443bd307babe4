#include "packets/EthernetFrame.h"

#include <benchmark/benchmark.h>

namespace mesk::benchmarks {

namespace {

/// A frame from an array shares the array: the time must not grow with the size.
void frameFromBytes(benchmark::State& state)
{
    const QByteArray bytes(static_cast<int>(state.range(0)), '\x5a');
    while (state.KeepRunning()) {
        const EthernetFrame frame(bytes);
        benchmark::DoNotOptimize(&frame);
    }
    if (EthernetFrame(bytes).serialize().constData() != bytes.constData()) {
        state.SkipWithError("the payload was copied");
    }
}
BENCHMARK(frameFromBytes)->Arg(60)->Arg(1514)->Arg(65536);

} // namespace

} // namespace mesk::benchmarks
