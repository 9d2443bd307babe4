// Asks the cameras at port 0 of board 0 who they are, through the plugin.
#include "LoadedPlugin.h"
#include "gvcp/GVCPCommandPacket.h"
#include "gvcp/GVCPDiscoveryAckPacket.h"
#include "gvcp/GVCPMessageCode.h"
#include "packets/EthernetFrame.h"
#include "packets/IPv4Packet.h"
#include "packets/IpAddress.h"
#include "packets/UdpPacket.h"

#include <boost/make_shared.hpp>

#include <cstdio>
#include <err.h>
#include <memory>

static QByteArray discovery()
{
    const GVCPCommandPacket command(GVCPPacket::AckRequired, GVCPMessageCode::DiscoveryCommand, 1, {},
                                    NetworkOrder);
    UdpPacket datagram(50000, GVCPPacket::Port, command);
    IPv4Packet packet(IpAddress(0xc0a84d01), IpAddress::broadcast(), &datagram); // from 192.168.77.1
    return EthernetFrame(MacAddress(0x02, 0x4b, 0, 0, 0, 1), MacAddress::broadcast(), &packet).serialize();
}

static bool print(const QByteArray& bytes)
{
    const std::unique_ptr<const InternetPacket> internet(EthernetFrame(bytes).internetPacket());
    const auto* const ip = dynamic_cast<const IPv4Packet*>(internet.get());
    const std::unique_ptr<const TransportPacket> transport(ip ? ip->transportPacket() : nullptr);
    const auto* const udp = dynamic_cast<const UdpPacket*>(transport.get());
    const std::unique_ptr<const ApplicationPacket> message(udp ? udp->applicationPacket() : nullptr);
    const auto* const camera = dynamic_cast<const GVCPDiscoveryAckPacket*>(message.get());
    if (camera)
        std::printf("%s %s, serial %s\n", camera->manufacturerName().constData(),
                    camera->modelName().constData(), camera->serialNumber().constData());
    return camera != nullptr;
}

int main(int argc, char** argv)
try {
    if (argc != 2)
        errx(2, "usage: load-plugin BIN-FOLDER");
    const LoadedPlugin plugin(argv[1]);
    const auto port = plugin.makePort(0, 0);
    if (!port->open())
        throw std::runtime_error("board 0 does not open");
    port->startWorkers();
    port->sendFrame(boost::make_shared<EthernetFrame>(discovery()));
    bool found = false;
    for (int reads = 0; reads < 50 && !found; ++reads) // of 100 ms at most
        if (const auto frame = port->receiveFrame(nullptr))
            found = print(frame->serialize());
    port->requestStop();
    port->finish(); // then the port goes, and the plugin behind it
    return found ? 0 : 1;
} catch (const std::exception& error) {
    errx(3, "%s", error.what());
}
