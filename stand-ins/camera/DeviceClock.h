#pragma once

#include "stack/Time.h"

namespace emulated_camera {

/// The timestamp counter of the device: nanoseconds since it was reset. [one thread at a time]
class DeviceClock {
public:
    void reset(mesk::stack::TimePoint now) { m_start = now; }
    quint64 ticks(mesk::stack::TimePoint now) const
    {
        return quint64(std::chrono::nanoseconds(now - m_start).count());
    }

private:
    mesk::stack::TimePoint m_start;
};

} // namespace emulated_camera
