#include "benchmarks/interface/BenchPort.h"
#include "packets/EthernetFrame.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstring>

namespace mesk::benchmarks {

namespace {

void receiveFrame(benchmark::State& state)
{
    const auto port = openBenchPort();
    benchBoardFunction<BenchSetFrameSize>("benchSetFrameSize")(static_cast<std::uint32_t>(state.range(0)));
    bool ok = false;
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(port->receiveFrame(&ok));
    }
    if (!ok) {
        state.SkipWithError("no frame");
    }
}

void copyWords(benchmark::State& state)
{
    benchBoardFunction<BenchSetFrameSize>("benchSetFrameSize")(static_cast<std::uint32_t>(state.range(0)));
    const std::uint32_t* const words = benchBoardFunction<BenchTransmission>("benchTransmission")();
    std::array<std::uint32_t, 2048> copy{};
    std::size_t bytes = static_cast<std::size_t>(state.range(0)) * 2;
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(bytes);
        std::memcpy(copy.data(), words, bytes);
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
}

BENCHMARK(receiveFrame)->Arg(64)->Arg(590)->Arg(1514);
BENCHMARK(copyWords)->Arg(64)->Arg(590)->Arg(1514);

} // namespace

} // namespace mesk::benchmarks
