// The library side of the recording dispatcher.

#include "tests/support/logging/RecordingDispatcherRecord.h"

#define MESK_EXPORT __attribute__((visibility("default")))

using namespace kivo::tools::logging;
using mesk::tests::RecordedLine;
using mesk::tests::RecordingDispatcherRecord;

namespace {

// Never destroyed: the product may log until the very end of the process.
RecordingDispatcherRecord& record = *new RecordingDispatcherRecord;

void getLogger(const char* name, std::uint64_t* id, std::uint32_t* level)
{
    const std::lock_guard<std::mutex> lock(record.mutex);
    *id = record.idOf(name);
    *level = record.level;
}

void log(std::uint64_t id, std::uint32_t level, const char* text, std::uint32_t extraSize,
         const void* extraData)
{
    std::unique_lock<std::mutex> lock(record.mutex);
    const RecordedLine line{record.names[id], level, text, extraSize, extraData};
    record.lines.push_back(line);
    const auto observer = record.lineObserver;
    lock.unlock();
    if (observer)
        observer(line);
}

void attach(void* logging, DispatcherGoneFunction gone, LevelChangedFunction levelChanged,
            GetLoggerFunction* getLoggerOut, LogFunction* logOut)
{
    std::unique_lock<std::mutex> lock(record.mutex);
    record.client = {logging, gone, levelChanged};
    const auto observer = record.attachObserver;
    lock.unlock();
    if (observer)
        observer();
    *getLoggerOut = &getLogger;
    *logOut = &log;
}

void detach(void* logging)
{
    const std::lock_guard<std::mutex> lock(record.mutex);
    if (record.client.logging == logging) {
        record.client = {};
        ++record.detachCount;
    }
}

} // namespace

extern "C" {
extern MESK_EXPORT LoggingDispatcherDescriptor logging_dispatcher_descriptor;
extern MESK_EXPORT RecordingDispatcherRecord* recording_dispatcher_record;

LoggingDispatcherDescriptor logging_dispatcher_descriptor{&attach, &detach};
RecordingDispatcherRecord* recording_dispatcher_record = &record;
}
