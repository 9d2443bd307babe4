#pragma once

#include <exception>

namespace kivo::templates::platform {

/// Thrown by both sides of a `SynchronizedQueue` that was interrupted.
class SynchronizedQueueInterruptException : public std::exception {};

} // namespace kivo::templates::platform
