// Prints the frame that answers an ARP request, or ends with 1 where there is nothing to answer.
#include "packets/ArpPacket.h"
#include "packets/EthernetFrame.h"
#include "packets/IpAddress.h"

#include <cstdio>
#include <err.h>
#include <memory>
#include <string>

int main(int argc, char** argv)
{
    MacAddress ownMac;
    IpAddress ownIp;
    if (argc != 4 || !ownMac.parse(std::string(argv[1])) || !ownIp.parse(std::string(argv[2])))
        errx(2, "usage: answer-arp OWN-MAC OWN-IP FRAME-IN-HEX");
    const EthernetFrame received(QByteArray::fromHex(argv[3]));
    const std::unique_ptr<const InternetPacket> packet(received.internetPacket());
    const auto* const request = dynamic_cast<const ArpPacket*>(packet.get());
    if (request == nullptr || request->destinationAddress() != ownIp)
        return 1;
    const std::unique_ptr<ArpPacket> reply(request->reply(ownIp, ownMac));
    if (!reply)
        return 1;
    const EthernetFrame answer(ownMac, request->senderMacAddress(), reply.get());
    std::puts(answer.serialize().toHex().constData());
}
