// The library side of the recording dispatcher.

#include "support/logging/LoggingDispatcherDescriptor.h"
#include "tests/support/logging/RecordingDispatcherControl.h"

#include <map>
#include <mutex>
#include <utility>

#define MESK_EXPORT __attribute__((visibility("default")))

namespace mesk::tests {

namespace {

using namespace kivo::tools::logging;

constexpr std::uint32_t levelOff = 7;

/// Never calls the client or an observer under its own lock.
class Recorder : public RecordingDispatcherControl {
public:
    void reset() override
    {
        {
            const Lock lock(m_mutex);
            m_lines.clear();
            m_lineObserver = nullptr;
            m_attachObserver = nullptr;
            m_detaches = 0;
        }
        setLevel(levelOff);
    }

    void setLevel(std::uint32_t level) override
    {
        std::map<std::uint64_t, std::string> names;
        {
            const Lock lock(m_mutex);
            m_level = level;
            names = m_names;
        }
        for (const auto& [id, name] : names)
            changeLevel(id, level);
    }

    std::vector<RecordedLine> lines() const override
    {
        const Lock lock(m_mutex);
        return m_lines;
    }

    void clear() override
    {
        const Lock lock(m_mutex);
        m_lines.clear();
    }

    void onLine(std::function<void(const RecordedLine&)> observer) override
    {
        const Lock lock(m_mutex);
        m_lineObserver = std::move(observer);
    }

    void onAttach(std::function<void()> observer) override
    {
        const Lock lock(m_mutex);
        m_attachObserver = std::move(observer);
    }

    void shareId(const std::string& alias, const std::string& name) override
    {
        const std::uint64_t id = idOf(name);
        const Lock lock(m_mutex);
        m_ids[alias] = id;
    }

    std::uint64_t idOf(const std::string& name) override
    {
        const Lock lock(m_mutex);
        const auto [entry, isNew] = m_ids.try_emplace(name, m_ids.size() + 1);
        if (isNew)
            m_names[entry->second] = name;
        return entry->second;
    }

    void changeLevel(std::uint64_t id, std::uint32_t level) override
    {
        if (const LevelChangedFunction function = client().levelChanged)
            function(id, level);
    }

    void setReportedLevel(std::uint32_t level) override
    {
        const Lock lock(m_mutex);
        m_level = level;
    }

    void goAway() override
    {
        const Client left = exchangeClient({});
        if (left.gone != nullptr)
            left.gone();
    }

    bool attached() const override { return client().logging != nullptr; }

    unsigned detachCount() const override
    {
        const Lock lock(m_mutex);
        return m_detaches;
    }

    void attach(void* logging, DispatcherGoneFunction gone, LevelChangedFunction levelChanged)
    {
        exchangeClient({logging, gone, levelChanged});
        std::function<void()> observer;
        {
            const Lock lock(m_mutex);
            observer = m_attachObserver;
        }
        if (observer)
            observer();
    }

    void detach(void* logging)
    {
        const Lock lock(m_mutex);
        if (m_client.logging == logging) {
            m_client = {};
            ++m_detaches;
        }
    }

    void report(const char* name, std::uint64_t* id, std::uint32_t* level)
    {
        *id = idOf(name);
        const Lock lock(m_mutex);
        *level = m_level;
    }

    void log(RecordedLine line, std::uint64_t id)
    {
        std::function<void(const RecordedLine&)> observer;
        {
            const Lock lock(m_mutex);
            line.logger = m_names[id];
            m_lines.push_back(line);
            observer = m_lineObserver;
        }
        if (observer)
            observer(line);
    }

private:
    using Lock = std::lock_guard<std::mutex>;

    struct Client {
        void* logging = nullptr;
        DispatcherGoneFunction gone = nullptr;
        LevelChangedFunction levelChanged = nullptr;
    };

    Client client() const
    {
        const Lock lock(m_mutex);
        return m_client;
    }

    Client exchangeClient(Client next)
    {
        const Lock lock(m_mutex);
        return std::exchange(m_client, next);
    }

    mutable std::mutex m_mutex; ///< guards all fields
    Client m_client;
    std::vector<RecordedLine> m_lines;
    std::function<void(const RecordedLine&)> m_lineObserver;
    std::function<void()> m_attachObserver;
    std::map<std::string, std::uint64_t> m_ids; ///< by name, several names may share one
    std::map<std::uint64_t, std::string> m_names;
    std::uint32_t m_level = levelOff;
    unsigned m_detaches = 0;
};

Recorder& recorder()
{
    // Never destroyed: the product may log until the very end of the process.
    static Recorder& instance = *new Recorder;
    return instance;
}

void getLogger(const char* name, std::uint64_t* id, std::uint32_t* level)
{
    recorder().report(name, id, level);
}

void log(std::uint64_t id, std::uint32_t level, const char* text, std::uint32_t extraSize,
         const void* extraData)
{
    recorder().log({{}, level, text, extraSize, extraData}, id);
}

void attach(void* logging, DispatcherGoneFunction gone, LevelChangedFunction levelChanged,
            GetLoggerFunction* getLoggerOut, LogFunction* logOut)
{
    recorder().attach(logging, gone, levelChanged);
    *getLoggerOut = &getLogger;
    *logOut = &log;
}

void detach(void* logging)
{
    recorder().detach(logging);
}

} // namespace

} // namespace mesk::tests

extern "C" {
extern MESK_EXPORT kivo::tools::logging::LoggingDispatcherDescriptor logging_dispatcher_descriptor;
extern MESK_EXPORT mesk::tests::RecordingDispatcherControl* recording_dispatcher_control;

kivo::tools::logging::LoggingDispatcherDescriptor logging_dispatcher_descriptor{&mesk::tests::attach,
                                                                                &mesk::tests::detach};
mesk::tests::RecordingDispatcherControl* recording_dispatcher_control = &mesk::tests::recorder();
}
