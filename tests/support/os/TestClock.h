#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// The clock and the event log that unit tests link in the place of the operating system's.
namespace mesk::tests {

/// Sleeps pass in no time and are added up; each look at the monotonic time lets a little of it pass,
/// so that bounded busy loops end. All functions may be called on any thread.
class TestClock {
public:
    /// Forgets all sleeps and the observer.
    static void reset();
    /// The sum of all sleeps since the reset.
    static std::uint64_t sleptMs();
    /// Called at each sleep, on the sleeping thread, with its length.
    static void onSleep(std::function<void(std::uint32_t milliseconds)> observer);
};

/// Keeps the records that would have gone to the system event log.
class TestEventLog {
public:
    static void reset();
    static std::vector<std::string> records();
};

} // namespace mesk::tests
