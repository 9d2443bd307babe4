#include "support/logging/LoggingDispatcherDescriptor.h"

#include <cstring>

/// A logging dispatcher that drops every line. It switches on the one logger of the enabled line; all
/// others are off.
namespace {

using namespace kivo::tools::logging;

constexpr std::uint32_t levelAll = 2;
constexpr std::uint32_t levelNone = 7;

void getLogger(const char* name, std::uint64_t* id, std::uint32_t* level)
{
    const bool enabled = std::strcmp(name, "benchmark.enabled") == 0;
    *id = enabled ? 2 : 1;
    *level = enabled ? levelAll : levelNone;
}

void log(std::uint64_t, std::uint32_t, const char*, std::uint32_t, const void*) {}

void attach(void*, DispatcherGoneFunction, LevelChangedFunction, GetLoggerFunction* getLoggerOut,
            LogFunction* logOut)
{
    *getLoggerOut = &getLogger;
    *logOut = &log;
}

void detach(void*) {}

} // namespace

extern "C" {
extern __attribute__((visibility("default"))) LoggingDispatcherDescriptor logging_dispatcher_descriptor;
LoggingDispatcherDescriptor logging_dispatcher_descriptor{&attach, &detach};
}
