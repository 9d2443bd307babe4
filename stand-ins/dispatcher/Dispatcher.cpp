#include "stand-ins/dispatcher/Dispatcher.h"

#include "stand-ins/dispatcher/Sinks.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <utility>

namespace kivo::dispatcher {

namespace {

spdlog::level::level_enum spdlogLevel(std::uint32_t level)
{
    // The severities below detail and above error have no name here.
    constexpr spdlog::level::level_enum levels[] = {spdlog::level::trace, spdlog::level::trace,
                                                    spdlog::level::debug, spdlog::level::info,
                                                    spdlog::level::warn,  spdlog::level::err};
    return level < std::size(levels) ? levels[level] : spdlog::level::critical;
}

/// A sink ends each line itself.
std::string_view withoutLineEnd(std::string_view text)
{
    return !text.empty() && text.back() == '\n' ? text.substr(0, text.size() - 1) : text;
}

} // namespace

Dispatcher::NamedLogger::NamedLogger(const char* name, spdlog::sink_ptr sink, std::uint32_t levelOfRules)
    : logger(name, std::move(sink))
    , level(levelOfRules)
{
    logger.set_level(spdlog::level::trace); // the level of the rules is the one that counts
    logger.flush_on(spdlog::level::trace);  // the last line before a crash is the one that is needed
}

Dispatcher::Dispatcher(std::string setupFile)
    : m_setupFile(std::move(setupFile))
    , m_stderr(makeStderrSink())
    , m_sinks(std::make_shared<spdlog::sinks::dist_sink_mt>())
{
}

void Dispatcher::attach(void* client, ClientCall dispatcherGone, LevelChangedCall levelChanged)
{
    const std::lock_guard<std::mutex> lock(m_setupMutex);
    if (m_clients.empty()) {
        const char* const environment = std::getenv("KIVO_LOG");
        m_environment = environment != nullptr ? environment : "";
        beginWatch();
        takeSetup();
    }
    m_clients[client] = std::make_shared<Client>(dispatcherGone, levelChanged);
}

void Dispatcher::detach(void* client)
{
    std::shared_ptr<Client> leaving;
    std::unique_ptr<FileWatch> ended; // outside of the lock, which the last look may need
    {
        const std::lock_guard<std::mutex> lock(m_setupMutex);
        const auto found = m_clients.find(client);
        if (found == m_clients.end())
            return;
        leaving = std::move(found->second);
        m_clients.erase(found);
        if (m_clients.empty()) {
            ended = std::move(m_watch);
            m_sinks->set_sinks({});
            m_openSinks.reset();
        }
    }
    const std::lock_guard<std::mutex> lock(leaving->calls);
    leaving->detached = true;
}

void Dispatcher::goAway()
{
    std::map<void*, std::shared_ptr<Client>> left;
    std::unique_ptr<FileWatch> ended;
    {
        const std::lock_guard<std::mutex> lock(m_setupMutex);
        left = m_clients; // a copy: a detach meanwhile has to find its client, to wait for the call
        ended = std::move(m_watch);
    }
    ended.reset();
    for (const auto& entry : left) {
        Client& client = *entry.second;
        const std::lock_guard<std::mutex> lock(client.calls);
        if (!std::exchange(client.detached, true))
            client.dispatcherGone();
    }
}

void Dispatcher::beginWatch()
{
    try {
        m_watch = std::make_unique<FileWatch>(m_setupFile, [this](bool changed) { look(changed); });
    } catch (const std::system_error& error) {
        spdlog::logger("dispatcher", m_stderr)
            .warn("warning: {}: not watched for changes: {}", m_setupFile, error.what());
    }
}

void Dispatcher::look(bool changed)
{
    if (changed) {
        const std::lock_guard<std::mutex> lock(m_setupMutex);
        if (m_clients.empty()) // the last one is just leaving
            return;
        takeSetup();
    }
    // Told again at the next look: a client that was just about to enter a logger with the level of
    // before has not taken the first call.
    if (m_tellAgain.exchange(changed) || changed)
        tellLevels();
}

void Dispatcher::takeSetup()
{
    Setup setup = readSetup(m_setupFile);
    for (const std::string& entry : setup.levels.addList(m_environment))
        setup.complaints.push_back("KIVO_LOG: '" + entry + "' is no logger name and level, ignored");
    if (!(m_openSinks == setup.sinks))
        openSinks(setup.sinks, setup.complaints);
    {
        const std::lock_guard<std::mutex> lock(m_namesMutex);
        m_rules = std::move(setup.levels);
        for (const auto& each : m_loggers)
            each->level = m_rules.levelOf(each->logger.name());
    }
    for (const std::string& complaint : setup.complaints)
        if (std::find(m_told.begin(), m_told.end(), complaint) == m_told.end())
            spdlog::logger("dispatcher", m_stderr).warn("warning: {}", complaint);
    m_told = std::move(setup.complaints);
}

void Dispatcher::openSinks(const SinkSetup& setup, std::vector<std::string>& complaints)
{
    std::vector<spdlog::sink_ptr> sinks;
    if (setup.toStderr)
        sinks.push_back(m_stderr);
    try {
        if (!setup.file.empty())
            sinks.push_back(makeFileSink(setup));
    } catch (const spdlog::spdlog_ex& error) {
        complaints.emplace_back(error.what());
    }
    m_sinks->set_sinks(std::move(sinks));
    m_openSinks = setup;
}

void Dispatcher::tellLevels()
{
    const std::lock_guard<std::mutex> telling(m_tellMutex);
    std::vector<std::shared_ptr<Client>> clients;
    {
        const std::lock_guard<std::mutex> lock(m_setupMutex);
        for (const auto& entry : m_clients)
            clients.push_back(entry.second);
    }
    std::vector<std::uint32_t> levels;
    {
        const std::lock_guard<std::mutex> lock(m_namesMutex);
        for (const auto& each : m_loggers)
            levels.push_back(levelForClients(*each));
    }
    for (const auto& client : clients) {
        const std::lock_guard<std::mutex> lock(client->calls);
        for (std::size_t i = 0; i < levels.size() && !client->detached; ++i)
            client->levelChanged(i + 1, levels[i]);
    }
}

void Dispatcher::getLogger(const char* name, std::uint64_t* id, std::uint32_t* level)
{
    const std::lock_guard<std::mutex> lock(m_namesMutex);
    const auto [entry, isNew] = m_ids.emplace(name, m_loggers.size() + 1);
    if (isNew)
        m_loggers.push_back(std::make_shared<NamedLogger>(name, m_sinks, m_rules.levelOf(name)));
    *id = entry->second;
    *level = levelForClients(*m_loggers[entry->second - 1]);
}

std::uint32_t Dispatcher::levelForClients(const NamedLogger& logger)
{
    const std::shared_lock<std::shared_mutex> lock(m_observationMutex);
    const std::uint32_t level = logger.level;
    return m_observation.wants(logger.logger.name()) ? std::min(level, m_observation.level) : level;
}

void Dispatcher::log(std::uint64_t id, std::uint32_t level, const char* text)
{
    const std::shared_ptr<NamedLogger> named = loggerOf(id);
    if (named == nullptr)
        return;
    // spdlog's pattern knows its own level words only, so the word is part of the message.
    if (level >= named->level)
        named->logger.log(spdlogLevel(level), "{}: {}", levelName(level), withoutLineEnd(text));
    show(named->logger.name(), level, text);
}

std::shared_ptr<Dispatcher::NamedLogger> Dispatcher::loggerOf(std::uint64_t id)
{
    const std::lock_guard<std::mutex> lock(m_namesMutex);
    return id >= 1 && id <= m_loggers.size() ? m_loggers[id - 1] : nullptr;
}

void Dispatcher::show(const std::string& name, std::uint32_t level, const char* text)
{
    const std::shared_lock<std::shared_mutex> lock(m_observationMutex);
    if (level >= m_observation.level && m_observation.wants(name))
        m_observation.observer(m_observation.context, name.c_str(), level, text);
}

void Dispatcher::observe(const char* pattern, std::uint32_t level, KivoDispatcherObserver observer,
                         void* context)
{
    {
        const std::lock_guard<std::shared_mutex> lock(m_observationMutex);
        m_observation = {pattern != nullptr ? pattern : "", level, observer, context};
    }
    m_tellAgain = true;
    tellLevels();
}

} // namespace kivo::dispatcher
