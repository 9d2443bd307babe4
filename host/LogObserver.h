#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace mesk::host {

/// Levels of log lines, as the plugin numbers them.
constexpr std::uint32_t logLevelDetail = 2;
constexpr std::uint32_t logLevelInformation = 3;

/// A line that the plugin has logged.
struct LogLine {
    std::uint32_t level = 0;
    std::string logger;
    std::string text;
};

/// Sees what the plugin logs while the object lives, beside what the dispatcher writes out. There may be
/// one at a time.
class LogObserver {
public:
    /// @param pattern of the loggers' names, with "*" for any run of characters.
    /// @param level the least one.
    /// @throws Failure if there is no logging dispatcher, or one that can't be observed.
    LogObserver(const std::string& binFolder, const std::string& pattern, std::uint32_t level);
    ~LogObserver();
    LogObserver(const LogObserver&) = delete;
    LogObserver& operator=(const LogObserver&) = delete;

    /// What was logged since the last call. [any thread]
    std::vector<LogLine> take();

private:
    struct D;
    std::unique_ptr<D> d;
};

/// The text of an interface's line without the thread and the interface's name in front of it.
std::string messageOf(const LogLine& line, const std::string& interfaceId);

} // namespace mesk::host
