#pragma once

#include "support/platform/RecursiveMutexGuard.h"
#include "support/platform/os/Event.h"

#include <atomic>
#include <cstdint>

namespace kivo::core::mesk {

/// Keeps the worker thread off the board while the device is released or taken back, so that no call
/// is in flight on a handle that is freed.
///
/// A mutex alone would starve the change, since the worker takes it again as soon as it has let it go.
/// So a change announces itself first, and the worker stands back until it is over: the change waits
/// for one poll at most.
class DeviceGate {
public:
    /// Holds the gate over a release or return of the device. [one thread at a time]
    class Change {
    public:
        explicit Change(DeviceGate& gate)
            : m_gate(gate)
        {
            m_gate.m_noChange.reset();
            m_gate.m_changeAnnounced = true;
            m_gate.m_mutex.lock();
        }
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;
        ~Change()
        {
            m_gate.m_mutex.unlock();
            m_gate.m_changeAnnounced = false;
            m_gate.m_noChange.set();
        }

    private:
        DeviceGate& m_gate;
    };

    /// Holds the gate over the board calls of one poll, never over a sleep or over the push of an event:
    /// who makes room in the event queue may be who changes the device. [the worker thread]
    class Poll : public templates::platform::RecursiveMutexGuard {
    public:
        explicit Poll(DeviceGate& gate)
            : RecursiveMutexGuard(&gate.m_mutex)
        {
        }
    };

    /// Waits while a change is announced, for a bounded time, so that a stop is seen. A worker that has just
    /// passed here waits for the change's end in `Poll` instead. [the worker thread]
    /// @returns false if the change still lasts: then leave the board alone.
    bool standBack()
    {
        if (m_changeAnnounced) {
            m_noChange.waitFor(standBackMaxMs);
        }
        return !m_changeAnnounced;
    }

private:
    static constexpr std::uint64_t standBackMaxMs = 100;

    templates::platform::RecursiveMutex m_mutex;
    std::atomic<bool> m_changeAnnounced{false};
    templates::platform::os::ManualResetEvent m_noChange{true};
};

} // namespace kivo::core::mesk
