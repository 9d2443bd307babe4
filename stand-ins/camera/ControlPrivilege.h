#pragma once

#include "packets/IpAddress.h"
#include "stack/Time.h"

#include <optional>

namespace emulated_camera {

/// A program that sends commands: known by where they come from.
struct Application {
    IpAddress address;
    quint16 port = 0;

    bool operator==(const Application& other) const { return address == other.address && port == other.port; }
};

/// Who controls the device (GigE Vision, control channel privilege register):
///
/// | bits     | meaning                                                                   |
/// |----------|---------------------------------------------------------------------------|
/// | 31 to 16 | key of the switchover, write only                                         |
/// | 2        | whoever knows the key may take over                                       |
/// | 1        | control: others may read                                                  |
/// | 0        | exclusive: others may neither read nor take over                          |
///
/// [one thread at a time]
class ControlPrivilege {
public:
    /// A write of the register. @returns a status.
    quint16 request(quint32 value, const Application& who, mesk::stack::TimePoint now);
    /// What the register reads.
    quint32 value() const;
    const std::optional<Application>& controller() const;

    bool mayRead(const Application& who) const;
    bool isController(const Application& who) const;
    void release();

    /// A command of the controller came.
    void refresh(mesk::stack::TimePoint now);
    mesk::stack::TimePoint lastHeard() const;

private:
    std::optional<Application> m_controller;
    quint32 m_bits = 0;
    quint32 m_switchoverKey = 0;
    mesk::stack::TimePoint m_lastHeard = mesk::stack::never;
};

} // namespace emulated_camera
