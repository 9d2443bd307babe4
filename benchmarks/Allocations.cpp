#include "benchmarks/AllocationCount.h"
#include "benchmarks/interface/BenchPort.h"
#include "packets/EthernetFrame.h"

#include <boost/make_shared.hpp>

#include <cstdio>

/// Counts heap allocations. A program of its own, since counting would slow down what is timed.
namespace mesk::benchmarks {

namespace {

void print(const char* what, int bytes, double allocations)
{
    std::printf("%-28s %6d bytes: %g allocations\n", what, bytes, allocations);
}

void countAll()
{
    const auto port = openBenchPort();
    const auto setFrameSize = benchBoardFunction<BenchSetFrameSize>("benchSetFrameSize");
    for (const int bytes : {64, 590, 1514}) {
        setFrameSize(static_cast<std::uint32_t>(bytes));
        print("receiveFrame", bytes, allocationsPer([&] { port->receiveFrame(nullptr); }));
        const auto frame = boost::make_shared<EthernetFrame>(QByteArray(bytes, '\x5a'));
        print("sendFrame", bytes, allocationsPer([&] { port->sendFrame(frame); }));
    }
    for (const int bytes : {60, 1514, 65536}) {
        const QByteArray array(bytes, '\x5a');
        print("EthernetFrame, on the stack", bytes,
              allocationsPer([&] { const EthernetFrame frame(array); }));
    }
}

} // namespace

} // namespace mesk::benchmarks

int main()
{
    mesk::benchmarks::countAll();
    return 0;
}
