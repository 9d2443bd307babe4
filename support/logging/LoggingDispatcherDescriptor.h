#pragma once

#include <cstdint>

namespace kivo::tools::logging {

/// Bare name of the dispatcher's library, and of the `LoggingDispatcherDescriptor` that it exports.
constexpr const char* loggingDispatcherLibrary = "common-logging-dispatcher";
constexpr const char* loggingDispatcherSymbol = "logging_dispatcher_descriptor";

/// The client's side, called by the dispatcher on any of its threads.
using DispatcherGoneFunction = void (*)();
using LevelChangedFunction = void (*)(std::uint64_t id, std::uint32_t level);

/// The dispatcher's side, safe for concurrent calls. `name` and `text` are zero-terminated and valid
/// for the call only; id and level of a logger are out-values, zeroed by the client.
using GetLoggerFunction = void (*)(const char* name, std::uint64_t* id, std::uint32_t* level);
using LogFunction = void (*)(std::uint64_t id, std::uint32_t level, const char* text, std::uint32_t extraSize,
                             const void* extraData);

/// The record that a logging dispatcher exports as data.
struct LoggingDispatcherDescriptor {
    /// Connects a client; `logging` is its `Logging` object, no more than an identity over there. The
    /// dispatcher fills the two addresses before it returns; it may call `levelChanged` from then on, and
    /// already while the call lasts. On another thread it then waits for the end of the call, so `attach`
    /// must not wait for that thread, nor need a lock that it holds.
    void (*attach)(void* logging, DispatcherGoneFunction dispatcherGone, LevelChangedFunction levelChanged,
                   GetLoggerFunction* getLoggerOut, LogFunction* logOut);
    /// Disconnects it: no callback comes after the return.
    void (*detach)(void* logging);
};

} // namespace kivo::tools::logging
