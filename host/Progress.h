#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace mesk::host {

class CaptureReader;
class Output;

/// One line on the terminal that shows how far some work has come. It appears when the work takes more
/// than a moment, is drawn anew while the object lives, and is gone with it.
class Progress {
public:
    /// @param text gives the line; called on a thread of the object's own.
    explicit Progress(std::function<std::string()> text);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// Whether anything may be shown: nothing under --quiet, and nothing unless standard output and
    /// standard error are terminals.
    static bool wanted(const Output& output);
    /// A line if it may be shown, else null.
    static std::unique_ptr<Progress> start(bool shown, std::function<std::string()> text);

private:
    void run(const std::function<std::string()>& text);

    std::mutex m_mutex;
    std::condition_variable m_ending;
    bool m_ended = false;
    std::thread m_thread;
};

/// A bar behind a title.
/// @param fraction of the work that is done.
std::string progressBar(const std::string& title, double fraction);
/// How far a capture has been read: a bar, or, where its size isn't known, a count of frames. [any thread]
std::string captureProgress(const std::string& title, const CaptureReader& reader);

} // namespace mesk::host
