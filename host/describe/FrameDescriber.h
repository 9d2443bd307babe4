#pragma once

#include <QByteArray>

#include <string>
#include <string_view>

class EthernetFrame;
class IPv4Packet;
class UdpPacket;

namespace mesk::host {

class FieldSink;
struct Summary;

/// Leads a frame through the packet classes, from its Ethernet header to the message of an application, and
/// hands on what each has to say. [one thread at a time]
class FrameDescriber {
public:
    /// @param fields takes all fields, null for nobody.
    /// @param summary takes a line's parts, null for nobody.
    FrameDescriber(FieldSink* fields, Summary* summary)
        : m_fields(fields)
        , m_summary(summary)
    {
    }

    /// @returns why there is no further layer, where that isn't the nature of the last one; else empty.
    std::string describe(const EthernetFrame& frame, const QByteArray& bytes);

private:
    std::string describeIPv4(const IPv4Packet& packet, std::string_view bytes);
    std::string describeTransport(const IPv4Packet& packet, std::string_view bytes);
    std::string describeUdp(const UdpPacket& packet, std::string_view bytes);
    std::string describeGvcp(const UdpPacket& packet);
    void describeGvcpView(unsigned code, bool isCommand, const QByteArray& bytes);
    template <typename Packet>
    void add(std::string_view className, const Packet& packet, std::string_view bytes);
    template <typename Packet, typename Base>
    bool addIfIs(std::string_view className, const Base& packet, std::string_view bytes);

    FieldSink* const m_fields;
    Summary* const m_summary;
};

} // namespace mesk::host
