#include "stand-ins/dispatcher/DispatcherDescriptor.h"
#include "stand-ins/dispatcher/LevelRules.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// The logging dispatcher: gives each logger name an identity and a level, and writes the lines to the
/// standard error stream. The levels come from `KIVO_LOG` in the environment, read once.
extern "C" {
extern kivo::dispatcher::DispatcherDescriptor logging_dispatcher_descriptor
    __attribute__((visibility("default")));
}

namespace kivo::dispatcher {

namespace {

class Dispatcher {
public:
    Dispatcher();

    /// The identity of a logger is its place in the order of first use, from 1 on.
    void getLogger(const char* name, std::uint64_t* id, std::uint32_t* level);
    void log(std::uint64_t id, std::uint32_t level, const char* text);

private:
    std::shared_ptr<spdlog::logger> loggerOf(std::uint64_t id);

    const std::shared_ptr<spdlog::sinks::stderr_sink_mt> m_sink;
    LevelRules m_rules;
    std::mutex m_mutex; // guards the two below
    std::map<std::string, std::uint64_t, std::less<>> m_ids;
    std::vector<std::shared_ptr<spdlog::logger>> m_loggers;
};

spdlog::level::level_enum spdlogLevel(std::uint32_t level)
{
    // The severities below detail and above error have no name here.
    constexpr spdlog::level::level_enum levels[] = {spdlog::level::trace, spdlog::level::trace,
                                                    spdlog::level::debug, spdlog::level::info,
                                                    spdlog::level::warn,  spdlog::level::err};
    return level < std::size(levels) ? levels[level] : spdlog::level::critical;
}

Dispatcher::Dispatcher()
    : m_sink(std::make_shared<spdlog::sinks::stderr_sink_mt>())
{
    m_sink->set_pattern("%Y-%m-%d %H:%M:%S.%e [%n] %v");
    const char* const list = std::getenv("KIVO_LOG");
    if (list == nullptr)
        return;
    for (const std::string& entry : m_rules.add(list))
        spdlog::logger("dispatcher", m_sink)
            .warn("warning: KIVO_LOG: '{}' is no logger name and level, ignored", entry);
}

void Dispatcher::getLogger(const char* name, std::uint64_t* id, std::uint32_t* level)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto [entry, isNew] = m_ids.emplace(name, m_loggers.size() + 1);
    if (isNew) {
        // The client tests the level before it hands a line over, so that everything that comes counts.
        m_loggers.push_back(std::make_shared<spdlog::logger>(name, m_sink));
        m_loggers.back()->set_level(spdlog::level::trace);
    }
    *id = entry->second;
    *level = m_rules.levelOf(name);
}

void Dispatcher::log(std::uint64_t id, std::uint32_t level, const char* text)
{
    // spdlog's pattern knows its own level words only, so the word is part of the message.
    if (const std::shared_ptr<spdlog::logger> logger = loggerOf(id))
        logger->log(spdlogLevel(level), "{}: {}", levelName(level), text);
}

std::shared_ptr<spdlog::logger> Dispatcher::loggerOf(std::uint64_t id)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return id >= 1 && id <= m_loggers.size() ? m_loggers[id - 1] : nullptr;
}

/// Never destroyed: a thread may still log while the process ends.
Dispatcher& dispatcher()
{
    static Dispatcher* const theDispatcher = new Dispatcher;
    return *theDispatcher;
}

void getLogger(const char* name, std::uint64_t* id, std::uint32_t* level)
{
    dispatcher().getLogger(name, id, level);
}

void log(std::uint64_t id, std::uint32_t level, const char* text, std::uint32_t /*extraSize*/,
         const void* /*extraData*/)
{
    dispatcher().log(id, level, text);
}

/// Levels don't change here and the dispatcher outlives its clients, so it has nothing to call back for
/// and keeps no client.
void attach(void* /*client*/, ClientCall /*dispatcherGone*/, LevelChangedCall /*levelChanged*/,
            GetLoggerCall* getLoggerOut, LogCall* logOut)
{
    *getLoggerOut = getLogger;
    *logOut = log;
}

void detach(void* /*client*/) {}

} // namespace

} // namespace kivo::dispatcher

kivo::dispatcher::DispatcherDescriptor logging_dispatcher_descriptor = {
    kivo::dispatcher::attach,
    kivo::dispatcher::detach,
};
