#include "benchmarks/packets/PacketWork.h"

#include "benchmarks/packets/SampleMessages.h"
#include "gvcp/GVCPDiscoveryAckPacket.h"
#include "gvcp/GVCPMessageCode.h"
#include "packets/ByteArrayHelpers.h"
#include "packets/DhcpPacket.h"
#include "packets/EthernetFrame.h"
#include "packets/IPv4Packet.h"
#include "packets/UdpPacket.h"

#include <memory>

namespace mesk::benchmarks::product {

namespace {

quint16 codeFor(const QByteArray& payload)
{
    return payload.size() == int(sizeof(registerValue)) ? GVCPMessageCode::ReadRegisterAck
                                                        : GVCPMessageCode::DiscoveryAck;
}

void setFields(GVCPDiscoveryAckPacket& ack)
{
    ack.setSpecVersionMajor(versionMajor);
    ack.setSpecVersionMinor(versionMinor);
    ack.setDeviceMode(deviceMode);
    ack.setMacAddress(MacAddress(deviceMac.data()));
    ack.setIpConfigOptions(ipConfigOptions);
    ack.setIpConfigCurrent(ipConfigCurrent);
    ack.setCurrentIp(IpAddress(deviceIp));
    ack.setSubnetMask(subnetMask);
    ack.setDefaultGateway(IpAddress(hostIp));
    ack.setManufacturerName(manufacturerName);
    ack.setModelName(modelName);
    ack.setDeviceVersion(deviceVersion);
    ack.setManufacturerInfo(manufacturerInfo);
    ack.setSerialNumber(serialNumber);
    ack.setUserName(userName);
}

QByteArray buildFrame(quint16 sourcePort, quint16 destinationPort, const ApplicationPacket& message)
{
    UdpPacket udp(sourcePort, destinationPort, message);
    IPv4Packet ip(IpAddress(deviceIp), IpAddress(hostIp), &udp);
    return EthernetFrame(MacAddress(deviceMac.data()), MacAddress(hostMac.data()), &ip).serialize();
}

// Casts as the peer does it: by the number of the class.
template <typename Message, typename Read>
quint64 walkTo(const QByteArray& bytes, Read read)
{
    const EthernetFrame frame(bytes);
    const std::unique_ptr<InternetPacket> internet(frame.internetPacket());
    if (internet->etherType() != IPv4Packet::EtherType) {
        return 0;
    }
    const auto& ip = static_cast<const IPv4Packet&>(*internet);
    const std::unique_ptr<TransportPacket> transport(ip.transportPacket());
    if (transport->protocol() != UdpPacket::Protocol) {
        return 0;
    }
    const auto& udp = static_cast<const UdpPacket&>(*transport);
    const std::unique_ptr<ApplicationPacket> application(udp.applicationPacket());
    return quint64(udp.sourcePort()) + udp.destinationPort() +
           read(static_cast<const Message&>(*application));
}

quint64 readHeader(const GVCPAckPacket& ack)
{
    return quint64(ack.status()) + ack.acknowledge() + ack.payloadLength() + ack.requestId();
}

quint64 sumOf(const QByteArray& text)
{
    return quint64(text.size()) + quint8(text.back());
}

} // namespace

QByteArray registerPayload()
{
    return byteArrayFromUInt32(qToBigEndian(registerValue));
}

QByteArray devicePayload()
{
    GVCPDiscoveryAckPacket ack(0, requestId);
    setFields(ack);
    return ack.payload();
}

QByteArray buildAck(const QByteArray& payload)
{
    return buildFrame(GVCPPacket::Port, hostPort,
                      GVCPAckPacket(0, codeFor(payload), requestId, payload, NetworkOrder));
}

QByteArray buildDevice()
{
    GVCPDiscoveryAckPacket ack(0, requestId);
    setFields(ack);
    return buildFrame(GVCPPacket::Port, hostPort, ack);
}

QByteArray buildDhcp()
{
    DhcpPacket message;
    message.setRequest(false);
    message.setXid(qToBigEndian(transactionId));
    message.setYiaddr(IpAddress(hostIp));
    message.setChaddr(MacAddress(hostMac.data()).rawBytes());
    for (const SampleOption& each : dhcpOptions) {
        message.setOption(each.code, QByteArray(reinterpret_cast<const char*>(each.value.data()), each.size));
    }
    return buildFrame(DhcpPacket::ServerPort, DhcpPacket::ClientPort, message);
}

quint64 walkAck(const QByteArray& frame)
{
    return walkTo<GVCPAckPacket>(frame, [](const GVCPAckPacket& ack) {
        const bool isRegister = ack.acknowledge() == GVCPMessageCode::ReadRegisterAck;
        return readHeader(ack) + (isRegister ? qFromBigEndian<quint32>(ack.payload().constData()) : 0);
    });
}

quint64 walkDevice(const QByteArray& frame)
{
    return walkTo<GVCPDiscoveryAckPacket>(frame, [](const GVCPDiscoveryAckPacket& ack) {
        return readHeader(ack) + ack.specVersionMajor() + ack.specVersionMinor() + ack.deviceMode() +
               ack.macAddress().toUInt64() + ack.ipConfigOptions() + ack.ipConfigCurrent() +
               ack.currentIp().toUInt32() + ack.subnetMask() + ack.defaultGateway().toUInt32() +
               sumOf(ack.manufacturerName()) + sumOf(ack.modelName()) + sumOf(ack.deviceVersion()) +
               sumOf(ack.manufacturerInfo()) + sumOf(ack.serialNumber()) + sumOf(ack.userName());
    });
}

quint64 walkDhcp(const QByteArray& frame)
{
    return walkTo<DhcpPacket>(frame, [](const DhcpPacket& message) {
        quint64 sum = quint64(message.xid()) + message.yiaddr().toUInt32();
        for (const SampleOption& each : dhcpOptions) {
            sum += sumOf(message.option(each.code));
        }
        return sum;
    });
}

} // namespace mesk::benchmarks::product
