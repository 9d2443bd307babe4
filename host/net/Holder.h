#pragma once

#include "host/net/PortLoop.h"
#include "stack/NetworkNode.h"

namespace mesk::host {

class Session;

/// This side of the net: a node with the MAC and IP address of the options, behind a port of the plugin.
///
/// All that the node is told happens while somebody waits in the loop, so what comes for one exchange
/// while another is waited for isn't lost: it goes to the node's receivers. [one thread at a time]
class Holder {
public:
    /// Opens the port that the options name. @throws Failure as Session::openPort().
    explicit Holder(Session& session);
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    Port& port() { return m_port; }
    stack::NetworkNode& node() { return m_node; }
    Loop& loop() { return m_loop; }

private:
    Port& m_port;
    stack::NetworkNode m_node;
    PortLoop m_loop;
};

} // namespace mesk::host
