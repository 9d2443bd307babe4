#pragma once

#include <QByteArray>

#include <string>
#include <string_view>

class ArpPacket;
class DhcpPacket;
class EthernetFrame;
class GVCPAckPacket;
class GVCPActionCommandPacket;
class GVCPCommandPacket;
class GVCPDiscoveryAckPacket;
class GVCPEventCommandPacket;
class GVCPEventDataCommandPacket;
class GVCPMemoryReadCommandPacket;
class GVCPMemoryWriteCommandPacket;
class GVCPPacketResendCommandPacket;
class GVCPRegisterReadCommandPacket;
class GVCPRegisterWriteCommandPacket;
class IPv4Packet;
class IcmpPacket;
class MacAddress;
class NetworkPacket;
class UdpPacket;

namespace mesk::host {

class FieldSink;
struct Summary;

// What each packet class has to say, one source per protocol: `addFields` gives every getter under its own
// name, `summarize` the parts of a line for people, and `whyNotValid` the reason in words, empty for a valid
// one, from the bytes that the packet was parsed from.

/// What all layers have.
void addSizes(FieldSink& fields, const NetworkPacket& packet);
void addMac(FieldSink& fields, std::string_view name, const MacAddress& address);
std::string_view viewOf(const QByteArray& bytes);
/// The number of 16 bits in network byte order at a place; 0 behind the end.
unsigned wordAt(std::string_view bytes, std::size_t at);
unsigned byteAt(std::string_view bytes, std::size_t at);

void addFields(FieldSink& fields, const EthernetFrame& frame);
void summarize(Summary& summary, const EthernetFrame& frame);
std::string whyNotValid(const EthernetFrame& frame, std::string_view bytes);

void addFields(FieldSink& fields, const ArpPacket& packet);
void summarize(Summary& summary, const ArpPacket& packet);
std::string whyNotValid(const ArpPacket& packet, std::string_view bytes);

void addFields(FieldSink& fields, const IPv4Packet& packet);
void summarize(Summary& summary, const IPv4Packet& packet);
std::string whyNotValid(const IPv4Packet& packet, std::string_view bytes);

void addFields(FieldSink& fields, const IcmpPacket& packet);
void summarize(Summary& summary, const IcmpPacket& packet);
std::string whyNotValid(const IcmpPacket& packet, std::string_view bytes);

void addFields(FieldSink& fields, const UdpPacket& packet);
void summarize(Summary& summary, const UdpPacket& packet);
std::string whyNotValid(const UdpPacket& packet, std::string_view bytes);

void addFields(FieldSink& fields, const DhcpPacket& packet);
void summarize(Summary& summary, const DhcpPacket& packet);
std::string whyNotValid(const DhcpPacket& packet, std::string_view bytes);

void addFields(FieldSink& fields, const GVCPCommandPacket& packet);
void summarize(Summary& summary, const GVCPCommandPacket& packet);
std::string whyNotValid(const GVCPCommandPacket& packet, std::string_view bytes);

void addFields(FieldSink& fields, const GVCPRegisterReadCommandPacket& packet);
void summarize(Summary& summary, const GVCPRegisterReadCommandPacket& packet);
void addFields(FieldSink& fields, const GVCPRegisterWriteCommandPacket& packet);
void summarize(Summary& summary, const GVCPRegisterWriteCommandPacket& packet);
void addFields(FieldSink& fields, const GVCPMemoryReadCommandPacket& packet);
void summarize(Summary& summary, const GVCPMemoryReadCommandPacket& packet);
void addFields(FieldSink& fields, const GVCPMemoryWriteCommandPacket& packet);
void summarize(Summary& summary, const GVCPMemoryWriteCommandPacket& packet);
void addFields(FieldSink& fields, const GVCPEventCommandPacket& packet);
void summarize(Summary& summary, const GVCPEventCommandPacket& packet);
void addFields(FieldSink& fields, const GVCPEventDataCommandPacket& packet);
void summarize(Summary& summary, const GVCPEventDataCommandPacket& packet);
void addFields(FieldSink& fields, const GVCPPacketResendCommandPacket& packet);
void summarize(Summary& summary, const GVCPPacketResendCommandPacket& packet);
void addFields(FieldSink& fields, const GVCPActionCommandPacket& packet);
void summarize(Summary& summary, const GVCPActionCommandPacket& packet);

void addFields(FieldSink& fields, const GVCPAckPacket& packet);
void summarize(Summary& summary, const GVCPAckPacket& packet);
std::string whyNotValid(const GVCPAckPacket& packet, std::string_view bytes);
void addFields(FieldSink& fields, const GVCPDiscoveryAckPacket& packet);
void summarize(Summary& summary, const GVCPDiscoveryAckPacket& packet);

} // namespace mesk::host
