#include "host/net/Pinger.h"

#include <random>

namespace mesk::host {

Pinger::Pinger(stack::NetworkNode& node, const Plan& plan, Answered answered)
    : m_node(node)
    , m_plan(plan)
    , m_tell(std::move(answered))
    , m_id(static_cast<quint16>(std::random_device{}()))
{
    m_node.onEchoReply(
        [this](const stack::NetworkNode::EchoReply& reply, stack::TimePoint now) { receive(reply, now); });
}

Pinger::~Pinger()
{
    m_node.onEchoReply({});
}

bool Pinger::turn(stack::TimePoint now)
{
    if (m_sent < m_plan.count && now >= m_nextSend) {
        const auto sequence = static_cast<quint16>(++m_sent);
        m_out[sequence] = now;
        m_lastSent = now;
        m_nextSend = now + m_plan.interval;
        m_node.sendEcho(m_plan.to, m_id, sequence, data(sequence), now);
    }
    return m_sent == m_plan.count && (m_out.empty() || now >= m_lastSent + m_plan.wait);
}

void Pinger::receive(const stack::NetworkNode::EchoReply& reply, stack::TimePoint now)
{
    if (reply.id != m_id || reply.sender != m_plan.to || reply.sequence == 0 || reply.sequence > m_sent) {
        return;
    }
    const auto out = m_out.find(reply.sequence);
    if (out == m_out.end()) {
        ++m_duplicates;
        return;
    }
    if (reply.data != data(reply.sequence)) {
        ++m_damaged;
        return;
    }
    ++m_answered;
    const stack::Duration time = now - out->second;
    m_out.erase(out);
    m_tell({reply.sequence, reply.data.size(), time});
}

/// Bytes that differ from place to place and from request to request.
QByteArray Pinger::data(quint16 sequence) const
{
    QByteArray bytes(m_plan.sizeBytes, Qt::Uninitialized);
    for (int at = 0; at < bytes.size(); ++at) {
        bytes[at] = static_cast<char>(at + sequence);
    }
    return bytes;
}

} // namespace mesk::host
