#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// A logging dispatcher that keeps every line, loaded by the product from the unit tests' root as the
/// real one would be.
namespace mesk::tests {

struct RecordedLine {
    std::string logger;
    std::uint32_t level = 0;
    std::string text;
    std::uint32_t extraSize = 0;
    const void* extraData = nullptr;
};

struct RecordingDispatcherRecord;

/// Access to the one recording dispatcher of the process. Constructing it empties the record and sets
/// every logger back to level 7. All operations may be called on any thread.
class RecordingDispatcher {
public:
    RecordingDispatcher();
    ~RecordingDispatcher(); ///< removes the observers
    RecordingDispatcher(const RecordingDispatcher&) = delete;
    RecordingDispatcher& operator=(const RecordingDispatcher&) = delete;

    /// Sets the level of every logger, those that exist and those to come.
    void setLevel(std::uint32_t level);
    std::vector<RecordedLine> lines() const;
    /// Texts of the lines of one level, without their "thread-id=N|" head.
    std::vector<std::string> texts(std::uint32_t level) const;
    void clear();
    /// Called for each line, on the logging thread.
    void onLine(std::function<void(const RecordedLine&)> observer);

    /// Tells the client a level for the id of one name and keeps nothing of it.
    void changeLevel(const std::string& name, std::uint32_t level);
    /// Tells the client that the dispatcher has gone.
    void goAway();
    /// What tests of the attachment itself look at and change, while no other thread does.
    RecordingDispatcherRecord& record() { return m_record; }

private:
    RecordingDispatcherRecord& m_record;
};

} // namespace mesk::tests
