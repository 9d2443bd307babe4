#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace emulated_board {

/// What a script answers in the place of an operation.
struct ScriptedAnswer {
    bool natural; ///< the operation's own kind of failure, in the place of `result`
    std::int64_t result;
};

/// Scripts that answer operations. Each counts the calls of its operation ("*": of all). The first one
/// whose turn it is answers. [any thread]
class Scripts {
public:
    /// Answers the calls `first` (1 is the next) to `first` + `count` - 1, for ever with a count of 0.
    void add(const std::string& operation, std::uint64_t first, std::uint64_t count, ScriptedAnswer answer);
    void clear();
    /// Counts a call, and gives the answer to it if a script has one.
    std::optional<ScriptedAnswer> answer(const char* operation);
    std::uint64_t answered() const;
    bool areThere() const { return m_areThere.load(std::memory_order_relaxed); }

private:
    struct Script {
        std::string operation;
        std::uint64_t first;
        std::uint64_t count;
        ScriptedAnswer answer;
        std::uint64_t calls;

        bool counts(const char* called);
    };

    mutable std::mutex m_mutex;
    std::vector<Script> m_scripts;
    std::uint64_t m_answered = 0;
    std::atomic<bool> m_areThere{false};
};

} // namespace emulated_board
