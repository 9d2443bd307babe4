#pragma once

#include "support/logging/Logger.h"
#include "support/platform/GuardedSingleton.h"

#include <cstdint>
#include <memory>

namespace kivo::tools::logging {

/// The client of the logging dispatcher, a library that is optional at run time. Without it logging is
/// silently off: every name gives one default logger of level 7, and no line reaches anything.
/// [any thread]
class Logging : public GuardedSingleton<Logging> {
public:
    Logging();
    /// Deletes all loggers and takes leave of the dispatcher.
    ~Logging() override;

    /// Looks for the dispatcher and attaches to it. Called by `instance()`.
    void init() override;

    /// @param name zero-terminated.
    /// @returns the logger of that name, never null, owned by this class. Names for which the
    ///     dispatcher has one id share one logger.
    static Logger* getLogger(const char* name);

private:
    friend class Logger;

    static void log(std::uint64_t id, std::uint32_t level, const char* text, std::uint32_t extraSize,
                    const void* extraData);
    static void dispatcherGone();
    static void levelChanged(std::uint64_t id, std::uint32_t level);

    struct D;
    const std::unique_ptr<D> d;
};

} // namespace kivo::tools::logging
