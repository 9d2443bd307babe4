#include "host/Interrupt.h"

#include "host/Failure.h"

#include <atomic>
#include <csignal>
#include <unistd.h>

namespace mesk::host {

namespace {

std::atomic<bool> requested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may use it");

extern "C" void noteInterrupt(int /*number*/)
{
    if (requested.exchange(true)) {
        _exit(static_cast<int>(ExitCode::Interrupted));
    }
}

} // namespace

void catchInterrupts()
{
    struct sigaction action = {};
    action.sa_handler = noteInterrupt;
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
}

bool interruptRequested()
{
    return requested.load(std::memory_order_relaxed);
}

} // namespace mesk::host
