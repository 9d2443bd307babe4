#include "benchmarks/Ratios.h"

int main(int argc, char** argv)
{
    return mesk::benchmarks::runWithRatios(argc, argv,
                                           {
                                               {"receiveFrame/64", "copyWords/64", 45},
                                               {"receiveFrame/590", "copyWords/590", 16},
                                               {"receiveFrame/1514", "copyWords/1514", 11},
                                               {"sendFrame/1514", "callsThroughPointer/1514", 1.05},
                                               {"crc32/1514", "crc32ByTable/1514", 0.25},
                                               {"eventHandOver", "bareHandOver", 3},
                                               {"enabledLine", "textInStringStream", 1.3},
                                               {"walkAck/60", "walkAckByTins/60", 1.5},
                                               {"walkAck/298", "walkAckByTins/298", 1.5},
                                               {"walkDevice/298", "walkDeviceByTins/298", 2},
                                               {"walkDhcp/332", "walkDhcpByTins/332", 2.5},
                                               {"buildAck/60", "buildAckByTins/60", 0.75},
                                               {"buildAck/298", "buildAckByTins/298", 0.75},
                                               {"buildDevice/298", "buildDeviceByTins/298", 0.85},
                                               {"buildDhcp/590", "buildDhcpByTins/590", 0.95},
                                           });
}
