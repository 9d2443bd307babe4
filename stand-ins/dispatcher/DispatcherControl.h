#pragma once

#include <stdint.h>

/// Control interface of the logging dispatcher: lets the host program see lines beside the sinks. Look
/// `KivoDispatcherObserve` up in the dispatcher's library.

#ifdef __cplusplus
extern "C" {
#endif

// NOLINTBEGIN(modernize-use-using): C reads this, too

/// Called for a line, on the thread that logs it, and on several at once; the texts are valid for the call
/// only. It must not log.
typedef void (*KivoDispatcherObserver)(void* context, const char* logger, uint32_t level, const char* text);

/// Shows every line at or above `level` of the loggers that fit `pattern` ("*" is a wildcard) to
/// `observer`, whatever the levels of the sinks, which stay as they are. There is one observer at most:
/// a call replaces the one before, a null observer removes it. After the return the observer before is
/// called no more. [any thread, but not from within an observer]
typedef void (*KivoDispatcherObserveFunction)(const char* pattern, uint32_t level,
                                              KivoDispatcherObserver observer, void* context);

// NOLINTEND(modernize-use-using)

#ifdef __cplusplus
}
#endif
