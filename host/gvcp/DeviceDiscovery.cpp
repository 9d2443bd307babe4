#include "host/gvcp/DeviceDiscovery.h"

#include "gvcp/GVCPCommandPacket.h"
#include "gvcp/GVCPDiscoveryAckPacket.h"
#include "gvcp/GVCPMessageCode.h"
#include "host/gvcp/GvcpStatus.h"
#include "host/gvcp/RequestIds.h"
#include "host/net/PortBinding.h"

#include <algorithm>

namespace mesk::host {

namespace {

constexpr quint16 localPort = 52955;
constexpr quint8 broadcastAnswerAllowed = 0x10;
constexpr int tries = 3;

FoundDevice deviceOf(const GVCPDiscoveryAckPacket& ack, const stack::Datagram& datagram)
{
    FoundDevice device;
    device.address = ack.currentIp() != IpAddress() ? ack.currentIp() : datagram.sender;
    device.mac = ack.macAddress() != MacAddress() ? ack.macAddress() : datagram.senderMac;
    device.manufacturer = ack.manufacturerName().toStdString();
    device.model = ack.modelName().toStdString();
    device.version = ack.deviceVersion().toStdString();
    device.serial = ack.serialNumber().toStdString();
    device.name = ack.userName().toStdString();
    return device;
}

class Discovery {
public:
    Discovery(stack::NetworkNode& node, stack::Duration wait, std::size_t enough)
        : m_node(node)
        , m_pause(wait / tries)
        , m_enough(enough)
        , m_command(broadcastAnswerAllowed | GVCPPacket::AckRequired, GVCPMessageCode::DiscoveryCommand,
                    RequestIds().next(), {}, NetworkOrder)
        , m_binding(m_node, localPort,
                    [this](const stack::Datagram& datagram, stack::TimePoint /*now*/) { receive(datagram); })
    {
    }

    bool turn(stack::TimePoint now)
    {
        if (now >= m_nextTry) {
            m_nextTry = now + m_pause;
            m_node.sendUdp(IpAddress::broadcast(), GVCPPacket::Port, localPort, m_command.serialize(), now);
        }
        return countWithAddress() >= m_enough;
    }
    std::vector<FoundDevice> found() const
    {
        std::vector<FoundDevice> sorted = m_found;
        std::sort(sorted.begin(), sorted.end(), [](const FoundDevice& one, const FoundDevice& other) {
            return one.address.toUInt32() < other.address.toUInt32();
        });
        return sorted;
    }

private:
    void receive(const stack::Datagram& datagram)
    {
        const GVCPDiscoveryAckPacket ack(datagram.data);
        if (datagram.senderPort != GVCPPacket::Port || !ack.isValid() ||
            ack.acknowledge() != GVCPMessageCode::DiscoveryAck || ack.status() != GvcpStatus::Success ||
            ack.requestId() != m_command.requestId()) {
            return;
        }
        add(deviceOf(ack, datagram));
    }
    /// A device that was still without an address when it answered first counts with the one that it has now.
    void add(const FoundDevice& device)
    {
        for (FoundDevice& each : m_found) {
            const bool sameAddress = each.address == device.address || device.address == IpAddress();
            if (each.mac == device.mac && sameAddress) {
                return;
            }
            if (each.mac == device.mac && each.address == IpAddress()) {
                each = device;
                return;
            }
        }
        if (m_found.size() < devicesMax) {
            m_found.push_back(device);
        }
    }
    std::size_t countWithAddress() const
    {
        return static_cast<std::size_t>(
            std::count_if(m_found.begin(), m_found.end(),
                          [](const FoundDevice& each) { return each.address != IpAddress(); }));
    }

    stack::NetworkNode& m_node;
    const stack::Duration m_pause;
    const std::size_t m_enough;
    const GVCPCommandPacket m_command;
    const PortBinding m_binding;
    stack::TimePoint m_nextTry;
    std::vector<FoundDevice> m_found;
};

} // namespace

std::vector<FoundDevice> discoverDevices(stack::NetworkNode& node, Loop& loop, stack::Duration wait,
                                         std::size_t enough)
{
    Discovery discovery(node, wait, enough);
    loop.await(loop.now() + wait, [&discovery](stack::TimePoint now) { return discovery.turn(now); });
    return discovery.found();
}

} // namespace mesk::host
