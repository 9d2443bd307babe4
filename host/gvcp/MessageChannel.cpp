#include "host/gvcp/MessageChannel.h"

#include "gvcp/GVCPAckPacket.h"
#include "gvcp/GVCPEventCommandPacket.h"
#include "gvcp/GVCPEventDataCommandPacket.h"
#include "gvcp/GVCPMessageCode.h"
#include "host/gvcp/BootstrapRegister.h"

#include <algorithm>

namespace mesk::host {

namespace {

constexpr std::size_t lastIdsMax = 16; // a device that sends a message again has few under way

std::vector<DeviceEvent> eventsOf(const GVCPEventCommandPacket& message)
{
    std::vector<DeviceEvent> events;
    for (quint32 index = 0; index < message.eventCount(); ++index) {
        events.push_back({message.eventId(index),
                          message.streamChannelIndex(index),
                          message.blockId(index),
                          message.timestamp(index),
                          {}});
    }
    return events;
}

std::vector<DeviceEvent> eventsOf(const GVCPEventDataCommandPacket& message)
{
    return {{message.eventId(), message.streamChannelIndex(), message.blockId(), message.timestamp(),
             message.data()}};
}

} // namespace

std::vector<DeviceEvent> deviceEventsOf(const QByteArray& message)
{
    // The factory has no classes for these, so their code is looked at first.
    const GVCPCommandPacket command(message);
    if (command.isValid() && command.command() == GVCPMessageCode::EventCommand) {
        return eventsOf(GVCPEventCommandPacket(message));
    }
    if (command.isValid() && command.command() == GVCPMessageCode::EventDataCommand) {
        return eventsOf(GVCPEventDataCommandPacket(message));
    }
    return {};
}

MessageChannel::MessageChannel(stack::NetworkNode& node, GvcpClient& client, Received received)
    : m_node(node)
    , m_client(client)
    , m_received(std::move(received))
    , m_binding(m_node, localPort,
                [this](const stack::Datagram& datagram, stack::TimePoint now) { receive(datagram, now); })
{
    m_client.writeRegister(BootstrapRegister::MessageChannelDestination, m_node.address().address.toUInt32());
    m_client.writeRegister(BootstrapRegister::MessageChannelPort, localPort);
}

MessageChannel::~MessageChannel()
{
    try {
        if (m_client.inControl()) {
            m_client.writeRegister(BootstrapRegister::MessageChannelPort, 0);
        }
    } catch (const std::exception&) { // the end of the control closes it as well
    }
}

void MessageChannel::receive(const stack::Datagram& datagram, stack::TimePoint now)
{
    const std::vector<DeviceEvent> events = deviceEventsOf(datagram.data);
    if (events.empty() || datagram.sender != m_client.device()) {
        return;
    }
    const GVCPCommandPacket command(datagram.data);
    if (command.hasFlag(GVCPPacket::AckRequired)) {
        m_node.sendUdp(datagram.sender, datagram.senderPort, localPort,
                       GVCPAckPacket(0, command, {}, NetworkOrder).serialize(), now);
    }
    if (isNew(command.requestId())) {
        std::for_each(events.begin(), events.end(), m_received);
    }
}

bool MessageChannel::isNew(quint16 id)
{
    if (std::find(m_lastIds.begin(), m_lastIds.end(), id) != m_lastIds.end()) {
        return false;
    }
    m_lastIds.push_back(id);
    if (m_lastIds.size() > lastIdsMax) {
        m_lastIds.pop_front();
    }
    return true;
}

} // namespace mesk::host
