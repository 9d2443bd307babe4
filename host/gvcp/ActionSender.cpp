#include "host/gvcp/ActionSender.h"

#include "gvcp/GVCPAckPacket.h"
#include "gvcp/GVCPCommandPacket.h"
#include "gvcp/GVCPMessageCode.h"
#include "host/gvcp/DeviceDiscovery.h"
#include "host/gvcp/RequestIds.h"
#include "host/net/PortBinding.h"
#include "packets/ByteArrayHelpers.h"

#include <algorithm>

namespace mesk::host {

namespace {

constexpr quint16 localPort = 52958;

} // namespace

std::vector<ActionAnswer> sendAction(stack::NetworkNode& node, Loop& loop, const IpAddress& to,
                                     const ActionKeys& keys, stack::Duration wait)
{
    const GVCPCommandPacket command(GVCPPacket::AckRequired, GVCPMessageCode::ActionCommand,
                                    RequestIds().next(),
                                    byteArrayFromUInt32(keys.device) + byteArrayFromUInt32(keys.group) +
                                        byteArrayFromUInt32(keys.groupMask),
                                    HostOrder);
    std::vector<ActionAnswer> answers;
    const auto receive = [&answers, &command](const stack::Datagram& datagram, stack::TimePoint /*now*/) {
        const GVCPAckPacket ack(datagram.data);
        const bool known = std::any_of(answers.begin(), answers.end(), [&datagram](const ActionAnswer& each) {
            return each.address == datagram.sender;
        });
        if (!known && answers.size() < devicesMax && datagram.senderPort == GVCPPacket::Port &&
            ack.isValid() && ack.acknowledge() == GVCPMessageCode::ActionAck &&
            ack.requestId() == command.requestId()) {
            answers.push_back({datagram.sender, ack.status()});
        }
    };
    const PortBinding binding(node, localPort, receive);
    const stack::TimePoint start = loop.now();
    node.sendUdp(to, GVCPPacket::Port, localPort, command.serialize(), start);
    loop.await(start + wait, [](stack::TimePoint /*now*/) { return false; });
    return answers;
}

} // namespace mesk::host
