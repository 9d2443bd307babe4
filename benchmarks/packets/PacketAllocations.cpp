#include "benchmarks/AllocationCount.h"
#include "benchmarks/packets/PacketWork.h"
#include "benchmarks/packets/SampleMessages.h"
#include "benchmarks/packets/TinsWork.h"

#include <cstdio>

/// Counts heap allocations of what the walk and build benchmarks time.
namespace mesk::benchmarks {

namespace {

template <typename Work, typename PeerWork>
void print(const char* what, int bytes, Work work, PeerWork peerWork)
{
    std::printf("%-12s %4d bytes: %2g allocations, libtins %2g\n", what, bytes, allocationsPer(work),
                allocationsPer(peerWork));
}

template <typename Walk>
void printWalk(const char* what, const QByteArray& frame, Walk walk, Walk peerWalk)
{
    print(
        what, frame.size(), [&] { walk(frame); }, [&] { peerWalk(frame); });
}

void countAll()
{
    const QByteArray value = product::registerPayload(), block = product::devicePayload();
    const QByteArray ack = product::buildAck(value), device = product::buildDevice();
    printWalk("walkAck", ack, product::walkAck, tins::walkAck);
    printWalk("walkAck", device, product::walkAck, tins::walkAck);
    printWalk("walkDevice", device, product::walkDevice, tins::walkDevice);
    printWalk("walkDhcp", product::buildDhcp().left(dhcpFrameBytesWithoutZeros), product::walkDhcp,
              tins::walkDhcp);
    print(
        "buildAck", ack.size(), [&] { product::buildAck(value); }, [&] { tins::buildAck(value); });
    print(
        "buildAck", device.size(), [&] { product::buildAck(block); }, [&] { tins::buildAck(block); });
    print("buildDevice", device.size(), product::buildDevice, tins::buildDevice);
    print("buildDhcp", dhcpFrameBytes, product::buildDhcp, tins::buildDhcp);
}

} // namespace

} // namespace mesk::benchmarks

int main()
{
    mesk::benchmarks::countAll();
    return 0;
}
