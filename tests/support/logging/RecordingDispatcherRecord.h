#pragma once

#include "support/logging/LoggingDispatcherDescriptor.h"
#include "tests/support/logging/RecordingDispatcher.h"

#include <map>
#include <mutex>

namespace mesk::tests {

/// What the recording dispatcher's library and the tests share. Neither the client nor an observer is
/// ever called under the lock.
struct RecordingDispatcherRecord {
    struct Client {
        void* logging = nullptr;
        kivo::tools::logging::DispatcherGoneFunction gone = nullptr;
        kivo::tools::logging::LevelChangedFunction levelChanged = nullptr;
    };

    /// The id that the name has or will have; the lock is the caller's matter.
    std::uint64_t idOf(const std::string& name)
    {
        const auto [entry, isNew] = ids.try_emplace(name, ids.size() + 1);
        if (isNew)
            names[entry->second] = name;
        return entry->second;
    }

    std::mutex mutex; ///< guards all fields
    Client client;
    std::vector<RecordedLine> lines;
    std::function<void(const RecordedLine&)> lineObserver;
    std::function<void()> attachObserver;
    std::map<std::string, std::uint64_t> ids; ///< by name, several names may share one
    std::map<std::uint64_t, std::string> names;
    std::uint32_t level = 7;
    unsigned detachCount = 0;
};

/// Exported as data by the library: a pointer to its one record.
constexpr const char* recordingDispatcherSymbol = "recording_dispatcher_record";

} // namespace mesk::tests
