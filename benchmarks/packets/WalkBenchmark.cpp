#include "benchmarks/packets/PacketWork.h"
#include "benchmarks/packets/SampleMessages.h"
#include "benchmarks/packets/TinsWork.h"

#include <benchmark/benchmark.h>

/// A received frame read down to its fields, all objects deleted, by the packet classes and by libtins.
namespace mesk::benchmarks {

namespace {

using Walk = quint64 (*)(const QByteArray&);

// Once both of them have read the same.
void run(benchmark::State& state, const QByteArray& frame, Walk walk, Walk other)
{
    if (frame.size() != state.range(0) || walk(frame) != other(frame)) {
        state.SkipWithError("the two read different fields");
        return;
    }
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(walk(frame));
    }
}

QByteArray ackFrame(const benchmark::State& state)
{
    return product::buildAck(state.range(0) == 60 ? product::registerPayload() : product::devicePayload());
}

// libtins would take each zero of the tail for an option.
QByteArray dhcpFrame()
{
    return product::buildDhcp().left(dhcpFrameBytesWithoutZeros);
}

void walkAck(benchmark::State& state)
{
    run(state, ackFrame(state), product::walkAck, tins::walkAck);
}
BENCHMARK(walkAck)->Arg(60)->Arg(298);

void walkAckByTins(benchmark::State& state)
{
    run(state, ackFrame(state), tins::walkAck, product::walkAck);
}
BENCHMARK(walkAckByTins)->Arg(60)->Arg(298);

void walkDevice(benchmark::State& state)
{
    run(state, product::buildDevice(), product::walkDevice, tins::walkDevice);
}
BENCHMARK(walkDevice)->Arg(298);

void walkDeviceByTins(benchmark::State& state)
{
    run(state, product::buildDevice(), tins::walkDevice, product::walkDevice);
}
BENCHMARK(walkDeviceByTins)->Arg(298);

void walkDhcp(benchmark::State& state)
{
    run(state, dhcpFrame(), product::walkDhcp, tins::walkDhcp);
}
BENCHMARK(walkDhcp)->Arg(dhcpFrameBytesWithoutZeros);

void walkDhcpByTins(benchmark::State& state)
{
    run(state, dhcpFrame(), tins::walkDhcp, product::walkDhcp);
}
BENCHMARK(walkDhcpByTins)->Arg(dhcpFrameBytesWithoutZeros);

} // namespace

} // namespace mesk::benchmarks
