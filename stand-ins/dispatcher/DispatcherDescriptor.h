#pragma once

#include <cstdint>

namespace kivo::dispatcher {

/// What the dispatcher may call at a client, on any thread, and never before `attach` was called or after
/// `detach` has returned. Such a call must not attach or detach.
///
/// `levelChanged` may come with a level that the client knows already, and for a logger that it doesn't
/// know. `dispatcherGone` comes when the library ends with the client still attached: at the end of the
/// process, where its functions stay callable and do nothing, or when it is unloaded, before which whoever
/// unloads it must see that no call of the client runs.
using ClientCall = void (*)();
using LevelChangedCall = void (*)(std::uint64_t id, std::uint32_t level);

/// What a client calls, on any thread. Texts are zero-terminated and valid for the call only.
using GetLoggerCall = void (*)(const char* name, std::uint64_t* id, std::uint32_t* level);
using LogCall = void (*)(std::uint64_t id, std::uint32_t level, const char* text, std::uint32_t extraSize,
                         const void* extraData);

/// The record that this library exports as `logging_dispatcher_descriptor`.
struct DispatcherDescriptor {
    /// Connects a client, known by its address, and fills the two places for its calls. The set-up is read
    /// for the first client.
    void (*attach)(void* client, ClientCall dispatcherGone, LevelChangedCall levelChanged,
                   GetLoggerCall* getLoggerOut, LogCall* logOut);
    /// Waits for a call to this client that runs. With the last client the thread that watches the set-up
    /// ends and the log file is closed; what comes later is written nowhere.
    void (*detach)(void* client);
};

} // namespace kivo::dispatcher
