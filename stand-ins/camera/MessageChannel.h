#pragma once

#include "stack/Time.h"
#include "stand-ins/camera/CameraCounters.h"
#include "stand-ins/camera/CameraMemory.h"
#include "stand-ins/camera/ControlPrivilege.h"

#include <deque>
#include <functional>
#include <optional>

namespace emulated_camera {

/// The message channel: brings events to the application that the channel's registers name, in order and one
/// at a time. With a timeout in the registers each is repeated until it is acknowledged, as often as they
/// say. [one thread at a time]
class MessageChannel {
public:
    struct Event {
        quint16 id = 0;
        quint64 blockId = 0;
        std::optional<QByteArray> data{}; ///< there, if possibly empty: an event-data message
    };
    using Send =
        std::function<void(const Application& to, const QByteArray& message, mesk::stack::TimePoint now)>;

    static constexpr std::size_t waitingMax = 32; ///< events beyond them are lost

    MessageChannel(const CameraMemory& memory, CameraCounters& counters, Send send);

    /// Whether the registers name an application.
    bool isOpen() const;
    /// Forgets what waits.
    void close();
    /// @param ticks time of the event.
    void post(const Event& event, quint64 ticks, mesk::stack::TimePoint now);
    void acknowledge(const Application& from, quint16 code, quint16 id, mesk::stack::TimePoint now);

    void expire(mesk::stack::TimePoint now);
    mesk::stack::TimePoint nextDeadline() const;

private:
    struct Message {
        quint16 code;
        quint16 id;
        QByteArray bytes;
    };
    Application destination() const;
    mesk::stack::Duration timeout() const;
    bool asksForAcknowledges() const;
    QByteArray payloadOf(const Event& event, bool extended, quint64 ticks) const;
    void sendFirst(mesk::stack::TimePoint now);
    void next(mesk::stack::TimePoint now);

    const CameraMemory& m_memory;
    CameraCounters& m_counters;
    Send m_send;
    std::deque<Message> m_waiting; ///< the first one is on its way
    quint32 m_repetitions = 0;     ///< of the first one
    mesk::stack::TimePoint m_deadline = mesk::stack::never;
    quint16 m_lastId = 0;
};

} // namespace emulated_camera
