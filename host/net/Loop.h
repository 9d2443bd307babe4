#pragma once

#include "host/Failure.h"
#include "stack/Time.h"

#include <functional>

namespace mesk::host {

/// Ctrl-C came in the middle of something that isn't finished without its answer.
class Interruption : public Failure {
public:
    Interruption()
        : Failure(ExitCode::Interrupted, "interrupted")
    {
    }
};

/// Lets time pass and frames come in while its caller waits for something. [one thread at a time]
class Loop {
public:
    enum class End { Done, Deadline, Interrupted };
    /// Whether Ctrl-C ends a wait: what gives something back goes on all the same, for a short while.
    enum class Interrupts { EndTheWait, Ignored };
    /// Called before each wait for a frame, so after each frame too.
    /// @returns whether what the caller waits for is there.
    using Turn = std::function<bool(stack::TimePoint now)>;

    Loop() = default;
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;
    virtual ~Loop() = default;

    virtual stack::TimePoint now() const = 0;
    /// What came is asked for first, so a frame in time is never missed.
    virtual End runUntil(stack::TimePoint deadline, Interrupts interrupts, const Turn& turn) = 0;

    /// @returns whether `turn` said yes; false at the deadline.
    /// @throws Interruption
    bool await(stack::TimePoint deadline, const Turn& turn);
    /// Waits until Ctrl-C, the deadline or `turn` say that it is enough.
    void serve(stack::TimePoint deadline, const Turn& turn);
};

/// @p seconds from @p from on; never for more than a TimePoint holds, infinity among it.
stack::TimePoint secondsAfter(stack::TimePoint from, double seconds);

} // namespace mesk::host
