#pragma once

#include "support/platform/GuardedSingletonBase.h"

#include <atomic>
#include <cstdint>
#include <forward_list>

/// Brings the framework's libraries up, and takes them and the plugin's singletons down again.
///
/// Uses are counted: the first `init` makes the one controller of the process, the last `deinit`
/// tears everything down and deletes it. A later `init` starts from nothing. All operations take one
/// recursive spin guard and hold it while they call the functions and singletons that were handed in:
/// the same thread may come back from there, any other thread spins as long as that takes.
class LibraryInitController {
public:
    using Function = void (*)();

    LibraryInitController(const LibraryInitController&) = delete;
    LibraryInitController& operator=(const LibraryInitController&) = delete;

    /// [any thread] Counts one use.
    static void init();

    /// [any thread] Takes one use back, which an `init` must have counted. The last one calls the
    /// registered deinit functions and then ends the registered singletons, newest first both times.
    static void deinit();

    /// [any thread] Remembers `deinitFunction` for the last `deinit`, then calls `initFunction`.
    /// Without a controller nothing is remembered, but the call takes place. An exception of
    /// `initFunction` goes to the caller; `deinitFunction` stays remembered.
    static void registerLibrary(Function initFunction, Function deinitFunction);

    /// [any thread] Hands a singleton over to be ended and deleted by the last `deinit`. Without a
    /// controller nothing happens, and the singleton stays until the end of the process.
    static void registerSingleton(GuardedSingletonBase* singleton);

    /// [any thread] Number of uses at this moment, read outside the guard.
    static std::uint32_t useCount();

private:
    LibraryInitController() = default;
    ~LibraryInitController() = default;

    void callDeinitFunctions();
    void endSingletons();

    static LibraryInitController* s_instance;
    static std::atomic<std::uint32_t> s_useCount;
    static std::atomic<std::uint32_t> s_spinVariable;
    static std::atomic<std::uint32_t> s_ownerVariable;

    // Both newest first.
    std::forward_list<GuardedSingletonBase*> m_singletons;
    std::forward_list<Function> m_deinitFunctions;
};
