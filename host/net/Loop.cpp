#include "host/net/Loop.h"

namespace mesk::host {

bool Loop::await(stack::TimePoint deadline, const Turn& turn)
{
    const End end = runUntil(deadline, Interrupts::EndTheWait, turn);
    if (end == End::Interrupted) {
        throw Interruption();
    }
    return end == End::Done;
}

void Loop::serve(stack::TimePoint deadline, const Turn& turn)
{
    runUntil(deadline, Interrupts::EndTheWait, turn);
}

stack::TimePoint secondsAfter(stack::TimePoint from, double seconds)
{
    constexpr double secondsMax = 1e9; // some thirty years
    if (!(seconds < secondsMax)) {
        return stack::never;
    }
    return from + std::chrono::duration_cast<stack::Duration>(std::chrono::duration<double>(seconds));
}

} // namespace mesk::host
