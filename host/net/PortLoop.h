#pragma once

#include "host/net/Loop.h"

#include <QByteArray>

namespace mesk::host {

class Port;

/// The loop behind a port of the plugin: hands frames and times to one node, on the thread that waits.
///
/// The port's own wait is up to 100 ms long, so a time that nobody's frame interrupts comes up to that
/// much late.
class PortLoop : public Loop {
public:
    using ReceiveFrame = std::function<void(const QByteArray& frame, stack::TimePoint now)>;
    using Expire = std::function<void(stack::TimePoint now)>;

    /// @param port must outlive the loop.
    PortLoop(Port& port, ReceiveFrame receive, Expire expire);

    stack::TimePoint now() const override;
    End runUntil(stack::TimePoint deadline, Interrupts interrupts, const Turn& turn) override;

private:
    Port& m_port;
    ReceiveFrame m_receive;
    Expire m_expire;
};

} // namespace mesk::host
