// Prints a line for each frame of a capture: its addresses, ports and GVCP message code.
#include "gvcp/GVCPAckPacket.h"
#include "gvcp/GVCPCommandPacket.h"
#include "packets/EthernetFrame.h"
#include "packets/IPv4Packet.h"
#include "packets/IpAddress.h"
#include "packets/UdpPacket.h"

#include <cstdio>
#include <err.h>
#include <memory>
#include <pcap/pcap.h>

static void print(u_char* /*user*/, const pcap_pkthdr* header, const u_char* bytes)
{
    const EthernetFrame frame(QByteArray(reinterpret_cast<const char*>(bytes), int(header->caplen)));
    std::printf("%s > %s", qPrintable(frame.source().toString(":")),
                qPrintable(frame.destination().toString(":")));
    const std::unique_ptr<const InternetPacket> internet(frame.internetPacket());
    if (internet)
        std::printf("  %s > %s", qPrintable(internet->sourceAddress().toString()),
                    qPrintable(internet->destinationAddress().toString()));
    const auto* const ip = dynamic_cast<const IPv4Packet*>(internet.get());
    const std::unique_ptr<const TransportPacket> transport(ip ? ip->transportPacket() : nullptr);
    const auto* const udp = dynamic_cast<const UdpPacket*>(transport.get());
    if (udp)
        std::printf("  %u > %u", udp->sourcePort(), udp->destinationPort());
    const std::unique_ptr<const ApplicationPacket> application(udp ? udp->applicationPacket() : nullptr);
    const auto* const gvcp = dynamic_cast<const GVCPPacket*>(application.get());
    if (gvcp && gvcp->isValid())
        std::printf("  %s 0x%04x", gvcp->isCommand() ? "command" : "acknowledge",
                    gvcp->isCommand() ? static_cast<const GVCPCommandPacket*>(gvcp)->command()
                                      : static_cast<const GVCPAckPacket*>(gvcp)->acknowledge());
    std::printf("\n");
}

int main(int /*argc*/, char** argv)
{
    char error[PCAP_ERRBUF_SIZE];
    const std::unique_ptr<pcap_t, void (*)(pcap_t*)> pcap(pcap_open_offline(argv[1], error), pcap_close);
    if (!pcap)
        errx(2, "%s (usage: decode-capture CAPTURE)", error);
    return pcap_loop(pcap.get(), -1, print, nullptr) == 0 ? 0 : 1;
}
