#pragma once

#include "stand-ins/dispatcher/Setup.h"

#include <spdlog/common.h>

namespace kivo::dispatcher {

/// The standard error stream; in colours if that is a terminal and `NO_COLOR` isn't set.
spdlog::sink_ptr makeStderrSink();

/// A file that is rotated: "log.txt" becomes "log.1.txt" and so on, and the oldest one goes. Makes
/// folders that are missing. Throws `spdlog::spdlog_ex` if it can't be opened. One thread at a time.
spdlog::sink_ptr makeFileSink(const SinkSetup& setup);

} // namespace kivo::dispatcher
