#pragma once

#include "stack/NetworkNode.h"

namespace mesk::host {

/// A receiver for what comes to a UDP port of a node, as long as the object lives.
class PortBinding {
public:
    PortBinding(stack::NetworkNode& node, quint16 port, stack::NetworkNode::ReceiveDatagram receiver)
        : m_node(node)
        , m_port(port)
    {
        m_node.bind(m_port, std::move(receiver));
    }
    ~PortBinding() { m_node.bind(m_port, {}); }
    PortBinding(const PortBinding&) = delete;
    PortBinding& operator=(const PortBinding&) = delete;

private:
    stack::NetworkNode& m_node;
    const quint16 m_port;
};

} // namespace mesk::host
