#pragma once

#include <cstdint>
#include <memory>
#include <optional>

namespace mesk::host {

class Port;

/// The events of a port, which are posted while the object lives. What it holds is of the plugin's making, so
/// it must be gone before the session closes. [one thread at a time]
class PortEvents {
public:
    struct Event {
        std::uint32_t type = 0;
        const char* name = ""; ///< "actionCommandTimeout" or "unknown"
        std::uint32_t count = 0;
    };

    explicit PortEvents(Port& port);
    ~PortEvents();
    PortEvents(const PortEvents&) = delete;
    PortEvents& operator=(const PortEvents&) = delete;

    /// The oldest one that hasn't been taken; nothing if there is none. Never waits.
    std::optional<Event> take();

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::host
