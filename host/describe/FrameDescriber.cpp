#include "host/describe/FrameDescriber.h"

#include "gvcp/GVCPAckPacket.h"
#include "gvcp/GVCPActionCommandPacket.h"
#include "gvcp/GVCPDiscoveryAckPacket.h"
#include "gvcp/GVCPEventCommandPacket.h"
#include "gvcp/GVCPEventDataCommandPacket.h"
#include "gvcp/GVCPMemoryReadCommandPacket.h"
#include "gvcp/GVCPMemoryWriteCommandPacket.h"
#include "gvcp/GVCPMessageCode.h"
#include "gvcp/GVCPPacketResendCommandPacket.h"
#include "gvcp/GVCPRegisterReadCommandPacket.h"
#include "gvcp/GVCPRegisterWriteCommandPacket.h"
#include "host/describe/FieldSink.h"
#include "host/describe/Layers.h"
#include "host/describe/Summary.h"
#include "packets/ArpPacket.h"
#include "packets/DhcpPacket.h"
#include "packets/EthernetFrame.h"
#include "packets/IPv4Packet.h"
#include "packets/IcmpPacket.h"
#include "packets/UdpPacket.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

namespace mesk::host {

namespace {

constexpr std::size_t codeAt = 2;

// IPv4 (RFC 791); the packet class doesn't look at fragments.
constexpr std::size_t fragmentAt = 6;
constexpr unsigned fragmentOffsetMask = 0x1fff;
constexpr unsigned fragmentUnitBytes = 8;

} // namespace

template <typename Packet>
void FrameDescriber::add(std::string_view className, const Packet& packet, std::string_view bytes)
{
    const std::string reason = whyNotValid(packet, bytes);
    if (m_fields != nullptr) {
        m_fields->openLayer(className);
        addFields(*m_fields, packet);
        if (!reason.empty()) {
            m_fields->text("reason", reason);
        }
        m_fields->closeLayer();
    }
    if (m_summary != nullptr) {
        summarize(*m_summary, packet);
        if (!reason.empty()) {
            m_summary->reasons.push_back(fmt::format("{}: {}", m_summary->protocol, reason));
        }
    }
}

template <typename Packet, typename Base>
bool FrameDescriber::addIfIs(std::string_view className, const Base& packet, std::string_view bytes)
{
    const auto* concrete = dynamic_cast<const Packet*>(&packet);
    if (concrete != nullptr) {
        add(className, *concrete, bytes);
    }
    return concrete != nullptr;
}

std::string FrameDescriber::describe(const EthernetFrame& frame, const QByteArray& bytes)
{
    add("EthernetFrame", frame, viewOf(bytes));
    const std::string_view packetBytes = viewOf(bytes).substr(frame.headerSize());
    const std::unique_ptr<InternetPacket> packet(frame.internetPacket());
    if (const auto* ipv4 = dynamic_cast<const IPv4Packet*>(packet.get())) {
        return describeIPv4(*ipv4, packetBytes);
    }
    if (const auto* arp = dynamic_cast<const ArpPacket*>(packet.get())) {
        add("ArpPacket", *arp, packetBytes);
        return "";
    }
    return frame.headerSize() != 0 ? fmt::format("EtherType 0x{:04x} has no class", frame.etherType()) : "";
}

std::string FrameDescriber::describeIPv4(const IPv4Packet& packet, std::string_view bytes)
{
    add("IPv4Packet", packet, bytes);
    std::string reason = describeTransport(packet, bytes);
    const unsigned fragmentBytes = (wordAt(bytes, fragmentAt) & fragmentOffsetMask) * fragmentUnitBytes;
    if (fragmentBytes != 0) {
        return fmt::format("fragment from byte {} on, without a header", fragmentBytes);
    }
    return reason;
}

std::string FrameDescriber::describeTransport(const IPv4Packet& packet, std::string_view bytes)
{
    const std::unique_ptr<TransportPacket> transport(packet.transportPacket());
    // The payload as the class has cut it.
    const std::size_t headerSize = packet.headerSize();
    const std::string_view message = bytes.substr(std::min(headerSize, bytes.size()), packet.payloadSize());
    if (const auto* udp = dynamic_cast<const UdpPacket*>(transport.get())) {
        return describeUdp(*udp, message);
    }
    if (const auto* icmp = dynamic_cast<const IcmpPacket*>(transport.get())) {
        add("IcmpPacket", *icmp, message);
        return "";
    }
    return fmt::format("IP protocol {} has no class", packet.protocol());
}

std::string FrameDescriber::describeUdp(const UdpPacket& packet, std::string_view bytes)
{
    add("UdpPacket", packet, bytes);
    const quint16 from = packet.sourcePort();
    const quint16 to = packet.destinationPort();
    if (GVCPAckPacket::isAckPort(from, to) || GVCPCommandPacket::isCommandPort(from, to)) {
        return describeGvcp(packet);
    }
    const std::unique_ptr<ApplicationPacket> application(packet.applicationPacket());
    if (!application || !addIfIs<DhcpPacket>("DhcpPacket", *application, viewOf(packet.payload()))) {
        return fmt::format("UDP ports {} and {} have no class", from, to);
    }
    return "";
}

std::string FrameDescriber::describeGvcp(const UdpPacket& datagram)
{
    const QByteArray& message = datagram.payload();
    const std::string_view bytes = viewOf(message);
    if (bytes.size() < GVCPPacket::HeaderSize) {
        return fmt::format("{} bytes are there, GVCP needs {}", bytes.size(), GVCPPacket::HeaderSize);
    }
    const unsigned code = wordAt(bytes, codeAt);
    const std::unique_ptr<ApplicationPacket> packet(datagram.applicationPacket());
    if (!packet) {
        const bool isCommand =
            GVCPCommandPacket::isCommandPort(datagram.sourcePort(), datagram.destinationPort());
        describeGvcpView(code, isCommand, message);
        return fmt::format("GVCP code 0x{:04x} has no class", code);
    }
    const bool ownClass =
        addIfIs<GVCPDiscoveryAckPacket>("GVCPDiscoveryAckPacket", *packet, bytes) ||
        addIfIs<GVCPRegisterReadCommandPacket>("GVCPRegisterReadCommandPacket", *packet, bytes) ||
        addIfIs<GVCPRegisterWriteCommandPacket>("GVCPRegisterWriteCommandPacket", *packet, bytes) ||
        addIfIs<GVCPActionCommandPacket>("GVCPActionCommandPacket", *packet, bytes);
    if (!ownClass) {
        describeGvcpView(code, dynamic_cast<const GVCPCommandPacket*>(packet.get()) != nullptr, message);
    }
    return "";
}

void FrameDescriber::describeGvcpView(unsigned code, bool isCommand, const QByteArray& bytes)
{
    const std::string_view view = viewOf(bytes);
    if (!isCommand) {
        add("GVCPAckPacket", GVCPAckPacket(bytes), view);
        return;
    }
    switch (code) {
    case GVCPMessageCode::PacketResendCommand:
        add("GVCPPacketResendCommandPacket", GVCPPacketResendCommandPacket(bytes), view);
        break;
    case GVCPMessageCode::ReadMemoryCommand:
        add("GVCPMemoryReadCommandPacket", GVCPMemoryReadCommandPacket(bytes), view);
        break;
    case GVCPMessageCode::WriteMemoryCommand:
        add("GVCPMemoryWriteCommandPacket", GVCPMemoryWriteCommandPacket(bytes), view);
        break;
    case GVCPMessageCode::EventCommand:
        add("GVCPEventCommandPacket", GVCPEventCommandPacket(bytes), view);
        break;
    case GVCPMessageCode::EventDataCommand:
        add("GVCPEventDataCommandPacket", GVCPEventDataCommandPacket(bytes), view);
        break;
    default:
        add("GVCPCommandPacket", GVCPCommandPacket(bytes), view);
    }
}

} // namespace mesk::host
