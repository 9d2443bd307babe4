#pragma once

#include "host/gvcp/GvcpClient.h"
#include "host/net/PortBinding.h"

#include <deque>

namespace mesk::host {

/// An event that a device has told over its message channel.
struct DeviceEvent {
    quint16 id = 0;
    quint16 streamChannelIndex = 0;
    quint64 blockId = 0;
    quint64 timestamp = 0; ///< in ticks of the device
    QByteArray data;       ///< of an event-data message
};

/// The events of an event or event-data message; none for anything else.
std::vector<DeviceEvent> deviceEventsOf(const QByteArray& message);

/// The message channel of a device that this side controls, open while the object lives. Each message is
/// acknowledged if the device asks for it; one that the device sends again, for an acknowledge that was
/// lost, is acknowledged again and told once.
class MessageChannel {
public:
    using Received = std::function<void(const DeviceEvent& event)>;

    static constexpr quint16 localPort = 52957;

    /// @param client in control; it outlives the channel, and so does the node.
    /// @throws Failure, GvcpRefusal, Interruption as the client.
    MessageChannel(stack::NetworkNode& node, GvcpClient& client, Received received);
    ~MessageChannel();
    MessageChannel(const MessageChannel&) = delete;
    MessageChannel& operator=(const MessageChannel&) = delete;

private:
    void receive(const stack::Datagram& datagram, stack::TimePoint now);
    bool isNew(quint16 id);

    stack::NetworkNode& m_node;
    GvcpClient& m_client;
    Received m_received;
    std::deque<quint16> m_lastIds;
    const PortBinding m_binding;
};

} // namespace mesk::host
