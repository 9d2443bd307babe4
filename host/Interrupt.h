#pragma once

namespace mesk::host {

/// From now on the first Ctrl-C (or SIGTERM) is noted and the second ends the process at once with 130.
/// A reader that goes away shows as a failed write instead of a signal.
void catchInterrupts();

/// Whether the run is to end. [any thread]
bool interruptRequested();

} // namespace mesk::host
