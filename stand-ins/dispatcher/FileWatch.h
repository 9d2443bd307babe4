#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace kivo::dispatcher {

/// Looks at a file once a second, on a thread of its own, which ends with the object.
class FileWatch {
public:
    /// Called at each look, on the thread of the watch. @param changed the file isn't what it was before:
    /// written, replaced, made or gone.
    using Look = std::function<void(bool changed)>;

    /// What the file is now counts as seen.
    FileWatch(std::string path, Look look);
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;
    /// Waits for a look that runs. Not from within a look.
    ~FileWatch();

private:
    /// What tells one content of the file from another; all zero if there is no file.
    struct State {
        std::uint64_t device = 0;
        std::uint64_t node = 0;
        std::int64_t sizeBytes = 0;
        std::int64_t writtenS = 0;
        std::int64_t writtenNs = 0;
        bool operator==(const State& other) const;
    };

    State state() const;
    void run();

    const std::string m_path;
    const Look m_look;
    State m_seen;
    std::mutex m_mutex; // guards m_end
    std::condition_variable m_wake;
    bool m_end = false;
    std::thread m_thread; // last: it uses the others
};

} // namespace kivo::dispatcher
