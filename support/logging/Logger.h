#pragma once

#include "support/platform/RecursiveMutex.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <set>

namespace kivo::tools::logging {

/// Levels in use; a higher number is more severe.
constexpr std::uint32_t levelDetail = 2;
constexpr std::uint32_t levelInformation = 3;
constexpr std::uint32_t levelWarning = 4;
constexpr std::uint32_t levelError = 5;
/// Threshold of a fresh logger: no line of the levels above passes it.
constexpr std::uint32_t levelOff = 7;

/// The handle that call sites hold; owned by `Logging` and valid until its teardown. A call site asks
/// `isEnabled` first and builds the text only then. [any thread]
class Logger {
public:
    /// @param id the dispatcher's identity of this logger.
    Logger(std::uint64_t id, std::uint32_t level);
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;
    virtual ~Logger();

    /// Whether a line of this level passes the threshold and the calling thread isn't muted. For a
    /// disabled line this is one comparison, without a lock or a call.
    bool isEnabled(std::uint32_t level) const
    {
        return level >= d->level.load(std::memory_order_relaxed) && threadIsEnabled();
    }

    /// Hands a line to the dispatcher, whatever its level; dropped where there is no dispatcher.
    /// @param text zero-terminated, needed for the call only.
    /// @param extraSize,extraData passed on; 0 and null at all call sites.
    void log(std::uint32_t level, const char* text, std::uint32_t extraSize, const void* extraData) const;

    /// Switches this logger on or off for the calling thread.
    /// @returns whether the thread was enabled before.
    bool setEnabledForCurrentThread(bool enabled);

    void setLevel(std::uint32_t level) { d->level.store(level, std::memory_order_relaxed); }

private:
    // Complete here, so that the level test is inlined at the call sites.
    struct D {
        const std::uint64_t id;
        templates::platform::RecursiveMutex mutex; ///< guards mutedThreads
        std::set<std::uint32_t> mutedThreads;
        std::atomic<std::uint32_t> level;
    };

    bool threadIsEnabled() const;

    const std::unique_ptr<D> d;
};

} // namespace kivo::tools::logging
