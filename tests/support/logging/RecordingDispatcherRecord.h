#pragma once

#include "tests/support/logging/RecordingDispatcher.h"

namespace mesk::tests {

/// The recording dispatcher's library as the tests reach it. All operations may be called on any thread.
class RecordingDispatcherControl {
public:
    virtual ~RecordingDispatcherControl() = default;

    virtual void reset() = 0;
    virtual void setLevel(std::uint32_t level) = 0;
    virtual std::vector<RecordedLine> lines() const = 0;
    virtual void clear() = 0;
    virtual void onLine(std::function<void(const RecordedLine&)> observer) = 0;

    /// Called within each attachment of a client, on its thread, before the client has its functions.
    virtual void onAttach(std::function<void()> observer) = 0;
    /// Gives `alias` the id of `name` from now on.
    virtual void shareId(const std::string& alias, const std::string& name) = 0;
    /// The id that the name has or will have.
    virtual std::uint64_t idOf(const std::string& name) = 0;
    /// Tells the client a level for one id and keeps nothing of it.
    virtual void changeLevel(std::uint64_t id, std::uint32_t level) = 0;
    /// The level reported for loggers that are asked for from now on; the client is told nothing.
    virtual void setReportedLevel(std::uint32_t level) = 0;
    /// Tells the client that the dispatcher has gone.
    virtual void goAway() = 0;
    virtual bool attached() const = 0;
    /// Detachments since the reset.
    virtual unsigned detachCount() const = 0;
};

/// Exported as data by the library: a pointer to its one control.
constexpr const char* recordingDispatcherControlSymbol = "recording_dispatcher_control";

} // namespace mesk::tests
