#pragma once

#include "stack/NetworkNode.h"

#include <functional>
#include <map>
#include <optional>

namespace mesk::host {

/// An echo that came back.
struct EchoAnswer {
    quint16 sequence = 0;
    int bytes = 0; ///< of its data
    stack::Duration time{0};
};

/// Sends echo requests (RFC 792) to one address, one after the other, and takes what comes back.
/// [one thread at a time]
class Pinger {
public:
    struct Plan {
        IpAddress to;
        unsigned count = 4;
        int sizeBytes = 56; ///< of the data
        stack::Duration interval = std::chrono::seconds(1);
        stack::Duration wait = std::chrono::seconds(1); ///< for what is out, behind the last request
    };
    using Answered = std::function<void(const EchoAnswer& answer)>;

    /// @param answered told of each echo once.
    Pinger(stack::NetworkNode& node, const Plan& plan, Answered answered);
    ~Pinger();
    Pinger(const Pinger&) = delete;
    Pinger& operator=(const Pinger&) = delete;

    /// Sends what is due. @returns whether nothing more is to come.
    bool turn(stack::TimePoint now);

    unsigned sent() const { return m_sent; }
    unsigned answered() const { return m_answered; }
    unsigned duplicates() const { return m_duplicates; }
    unsigned damaged() const { return m_damaged; } ///< came back with other data

private:
    void receive(const stack::NetworkNode::EchoReply& reply, stack::TimePoint now);
    QByteArray data(quint16 sequence) const;

    stack::NetworkNode& m_node;
    const Plan m_plan;
    const Answered m_tell;
    const quint16 m_id;
    std::map<quint16, stack::TimePoint> m_out;
    stack::TimePoint m_nextSend;
    stack::TimePoint m_lastSent;
    unsigned m_sent = 0;
    unsigned m_answered = 0;
    unsigned m_duplicates = 0;
    unsigned m_damaged = 0;
};

} // namespace mesk::host
