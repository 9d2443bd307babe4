#pragma once

#include <cstdint>

namespace kivo::dispatcher {

/// What the dispatcher may call at a client, on any thread.
using ClientCall = void (*)();
using LevelChangedCall = void (*)(std::uint64_t id, std::uint32_t level);

/// What a client calls, on any thread. Texts are zero-terminated and valid for the call only.
using GetLoggerCall = void (*)(const char* name, std::uint64_t* id, std::uint32_t* level);
using LogCall = void (*)(std::uint64_t id, std::uint32_t level, const char* text, std::uint32_t extraSize,
                         const void* extraData);

/// The record that this library exports as `logging_dispatcher_descriptor`.
struct DispatcherDescriptor {
    /// Connects a client, known by its address, and fills the two places for its calls.
    void (*attach)(void* client, ClientCall dispatcherGone, LevelChangedCall levelChanged,
                   GetLoggerCall* getLoggerOut, LogCall* logOut);
    void (*detach)(void* client);
};

} // namespace kivo::dispatcher
