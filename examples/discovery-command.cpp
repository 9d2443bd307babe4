// Prints the bytes of a frame that asks all GigE Vision cameras on the wire who they are.
#include "gvcp/GVCPCommandPacket.h"
#include "gvcp/GVCPMessageCode.h"
#include "packets/EthernetFrame.h"
#include "packets/IPv4Packet.h"
#include "packets/IpAddress.h"
#include "packets/UdpPacket.h"

#include <cstdio>
#include <err.h>
#include <string>

int main(int argc, char** argv)
{
    MacAddress ownMac;
    IpAddress ownIp;
    if (argc != 3 || !ownMac.parse(std::string(argv[1])) || !ownIp.parse(std::string(argv[2])))
        errx(2, "usage: discovery-command OWN-MAC OWN-IP");
    const quint16 ownPort = 50000, requestId = 1;
    const GVCPCommandPacket command(GVCPPacket::AckRequired, GVCPMessageCode::DiscoveryCommand, requestId, {},
                                    NetworkOrder);
    // Each layer only points to the one inside it: the outer ones go first, at the end of main.
    UdpPacket datagram(ownPort, GVCPPacket::Port, command);
    IPv4Packet packet(ownIp, IpAddress::broadcast(), &datagram);
    const EthernetFrame frame(ownMac, MacAddress::broadcast(), &packet);
    std::puts(frame.serialize().toHex().constData());
}
