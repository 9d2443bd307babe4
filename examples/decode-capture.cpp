// Prints a line for each UDP datagram of a capture: who sent it to whom.
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
    const std::unique_ptr<const InternetPacket> internet(frame.internetPacket());
    const auto* const ip = dynamic_cast<const IPv4Packet*>(internet.get());
    const std::unique_ptr<const TransportPacket> transport(ip ? ip->transportPacket() : nullptr);
    if (const auto* const udp = dynamic_cast<const UdpPacket*>(transport.get()))
        std::printf("%s:%u > %s:%u\n", qPrintable(ip->sourceAddress().toString()), udp->sourcePort(),
                    qPrintable(ip->destinationAddress().toString()), udp->destinationPort());
}

int main(int /*argc*/, char** argv)
{
    char error[PCAP_ERRBUF_SIZE];
    const std::unique_ptr<pcap_t, void (*)(pcap_t*)> pcap(pcap_open_offline(argv[1], error), pcap_close);
    if (!pcap)
        errx(2, "%s (usage: decode-capture CAPTURE)", error);
    return pcap_loop(pcap.get(), -1, print, nullptr) == 0 ? 0 : 1;
}
