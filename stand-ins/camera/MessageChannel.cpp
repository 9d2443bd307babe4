#include "stand-ins/camera/MessageChannel.h"

#include "gvcp/GVCPCommandPacket.h"
#include "gvcp/GVCPEventRecord.h"
#include "gvcp/GVCPMessageCode.h"

#include <QtEndian>

namespace emulated_camera {

using mesk::stack::TimePoint;

MessageChannel::MessageChannel(const CameraMemory& memory, CameraCounters& counters, Send send)
    : m_memory(memory)
    , m_counters(counters)
    , m_send(std::move(send))
{
}

bool MessageChannel::isOpen() const
{
    return destination().port != 0 && destination().address != IpAddress();
}

void MessageChannel::close()
{
    m_waiting.clear();
    m_deadline = mesk::stack::never;
}

void MessageChannel::post(const Event& event, quint64 ticks, TimePoint now)
{
    if (!isOpen())
        return;
    if (m_waiting.size() >= waitingMax) {
        ++m_counters.eventsLost;
        return;
    }
    if (++m_lastId == 0)
        ++m_lastId; // 0 is no request id
    const bool extended = m_memory.number(Register::EventLayout) != 0;
    const quint8 flags = quint8((asksForAcknowledges() ? GVCPPacket::AckRequired : 0) |
                                (extended ? GVCPPacket::ExtendedIds : 0));
    const quint16 code = event.data ? GVCPMessageCode::EventDataCommand : GVCPMessageCode::EventCommand;
    const GVCPCommandPacket command(flags, code, m_lastId, payloadOf(event, extended, ticks), NetworkOrder);
    ++m_counters.events;
    m_waiting.push_back({code, m_lastId, command.serialize()});
    if (m_waiting.size() == 1)
        sendFirst(now);
}

void MessageChannel::acknowledge(const Application& from, quint16 code, quint16 id, TimePoint now)
{
    if (m_waiting.empty() || !(from == destination()))
        return;
    const Message& first = m_waiting.front();
    if (code == first.code + 1 && id == first.id)
        next(now);
}

void MessageChannel::expire(TimePoint now)
{
    if (m_deadline > now)
        return;
    if (m_repetitions < m_memory.number(Register::MessageRetries)) {
        ++m_repetitions;
        ++m_counters.eventsRepeated;
        m_send(destination(), m_waiting.front().bytes, now);
        m_deadline = now + timeout();
    } else {
        ++m_counters.eventsLost;
        next(now);
    }
}

TimePoint MessageChannel::nextDeadline() const
{
    return m_deadline;
}

Application MessageChannel::destination() const
{
    return {IpAddress(m_memory.number(Register::MessageDestination)),
            quint16(m_memory.number(Register::MessagePort))};
}

mesk::stack::Duration MessageChannel::timeout() const
{
    return std::chrono::milliseconds(m_memory.number(Register::MessageTimeout));
}

bool MessageChannel::asksForAcknowledges() const
{
    return m_memory.number(Register::MessageTimeout) != 0;
}

QByteArray MessageChannel::payloadOf(const Event& event, bool extended, quint64 ticks) const
{
    using Record = GVCPEventRecord;
    QByteArray payload(Record::size(extended), '\0');
    char* const to = payload.data();
    qToBigEndian(event.id, to + Record::eventIdAt);
    if (extended)
        qToBigEndian(event.blockId, to + Record::extendedBlockIdAt);
    else
        qToBigEndian(quint16(event.blockId), to + Record::blockIdAt);
    qToBigEndian(ticks, to + (extended ? Record::extendedTimestampAt : Record::timestampAt));
    return payload + event.data.value_or(QByteArray());
}

// Without acknowledges nothing stays.
void MessageChannel::sendFirst(TimePoint now)
{
    while (!m_waiting.empty()) {
        m_send(destination(), m_waiting.front().bytes, now);
        m_repetitions = 0;
        if (asksForAcknowledges()) {
            m_deadline = now + timeout();
            return;
        }
        m_waiting.pop_front();
    }
}

void MessageChannel::next(TimePoint now)
{
    m_waiting.pop_front();
    m_deadline = mesk::stack::never;
    sendFirst(now);
}

} // namespace emulated_camera
