#include "benchmarks/packets/PacketWork.h"
#include "benchmarks/packets/SampleMessages.h"
#include "benchmarks/packets/TinsWork.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

/// A message built into a frame, by the packet classes and by libtins.
namespace mesk::benchmarks {

namespace {

using Bytes = std::vector<std::uint8_t>;

bool isSame(const char* a, const std::uint8_t* b, std::size_t size)
{
    return std::equal(a, a + size, b, [](char x, std::uint8_t y) { return std::uint8_t(x) == y; });
}

bool isSame(const QByteArray& frame, const Bytes& other)
{
    return std::size_t(frame.size()) == other.size() && isSame(frame.constData(), other.data(), other.size());
}

// The peer's DHCP message ends with its options and one zero, this one goes on with zeros to its fixed size.
// So there is more work in this one. Lengths and checksums differ, all the rest is compared.
bool isSameDhcp(const QByteArray& frame, const Bytes& other)
{
    struct Part {
        int from;
        int to;
    };
    constexpr int peerBytes = dhcpFrameBytesWithoutZeros + 1;
    constexpr Part parts[] = {{0, 16}, {18, 24}, {26, 38}, {42, peerBytes}};
    return frame.size() == dhcpFrameBytes && other.size() == std::size_t(peerBytes) &&
           std::all_of(std::begin(parts), std::end(parts),
                       [&](const Part& each) {
                           return isSame(frame.constData() + each.from, other.data() + each.from,
                                         std::size_t(each.to - each.from));
                       }) &&
           frame.mid(peerBytes).count('\0') == dhcpFrameBytes - peerBytes;
}

template <typename Build>
void run(benchmark::State& state, bool same, Build build)
{
    if (!same) {
        state.SkipWithError("the two build different frames");
        return;
    }
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(build());
    }
}

QByteArray payloadFor(const benchmark::State& state)
{
    return state.range(0) == 60 ? product::registerPayload() : product::devicePayload();
}

bool isSameAck(const benchmark::State& state)
{
    const QByteArray frame = product::buildAck(payloadFor(state));
    return frame.size() == state.range(0) && isSame(frame, tins::buildAck(payloadFor(state)));
}

void buildAck(benchmark::State& state)
{
    run(state, isSameAck(state), [payload = payloadFor(state)] { return product::buildAck(payload); });
}
BENCHMARK(buildAck)->Arg(60)->Arg(298);

void buildAckByTins(benchmark::State& state)
{
    run(state, isSameAck(state), [payload = payloadFor(state)] { return tins::buildAck(payload); });
}
BENCHMARK(buildAckByTins)->Arg(60)->Arg(298);

void buildDevice(benchmark::State& state)
{
    run(state, isSame(product::buildDevice(), tins::buildDevice()), product::buildDevice);
}
BENCHMARK(buildDevice)->Arg(298);

void buildDeviceByTins(benchmark::State& state)
{
    run(state, isSame(product::buildDevice(), tins::buildDevice()), tins::buildDevice);
}
BENCHMARK(buildDeviceByTins)->Arg(298);

void buildDhcp(benchmark::State& state)
{
    run(state, isSameDhcp(product::buildDhcp(), tins::buildDhcp()), product::buildDhcp);
}
BENCHMARK(buildDhcp)->Arg(dhcpFrameBytes);

void buildDhcpByTins(benchmark::State& state)
{
    run(state, isSameDhcp(product::buildDhcp(), tins::buildDhcp()), tins::buildDhcp);
}
BENCHMARK(buildDhcpByTins)->Arg(dhcpFrameBytes);

} // namespace

} // namespace mesk::benchmarks
