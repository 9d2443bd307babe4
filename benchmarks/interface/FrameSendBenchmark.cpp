#include "benchmarks/interface/BenchPort.h"
#include "packets/EthernetFrame.h"

#include <benchmark/benchmark.h>
#include <boost/make_shared.hpp>

namespace mesk::benchmarks {

namespace {

void sendFrame(benchmark::State& state)
{
    const auto port = openBenchPort();
    const auto frame =
        boost::make_shared<EthernetFrame>(QByteArray(static_cast<int>(state.range(0)), '\x5a'));
    while (state.KeepRunning()) {
        port->sendFrame(frame);
    }
}

/// The frame's words through one pointer that stays in a register: what no sender can beat that writes
/// each word by a call of the board library.
void callsThroughPointer(benchmark::State& state)
{
    using Write = std::int32_t (*)(std::uint64_t, std::uint32_t, std::uint64_t);
    const auto write = benchBoardFunction<Write>("KHalRegisterWrite");
    const QByteArray bytes(static_cast<int>(state.range(0)), '\x5a');
    const auto* const image = reinterpret_cast<const unsigned char*>(bytes.constData());
    const std::size_t words = static_cast<std::size_t>(bytes.size()) / 2;
    while (state.KeepRunning()) {
        for (std::size_t i = 0; i < words; ++i) {
            write(1, 7, static_cast<std::uint64_t>(image[2 * i] | image[2 * i + 1] << 8));
        }
    }
}

BENCHMARK(sendFrame)->Arg(1514);
BENCHMARK(callsThroughPointer)->Arg(1514);

} // namespace

} // namespace mesk::benchmarks
