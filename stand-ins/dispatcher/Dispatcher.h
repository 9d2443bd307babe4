#pragma once

#include "stand-ins/dispatcher/DispatcherControl.h"
#include "stand-ins/dispatcher/DispatcherDescriptor.h"
#include "stand-ins/dispatcher/FileWatch.h"
#include "stand-ins/dispatcher/LevelRules.h"
#include "stand-ins/dispatcher/Setup.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/dist_sink.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <vector>

namespace kivo::dispatcher {

/// Gives each logger name an identity and a level, and writes the lines to its sinks. Levels and sinks
/// come from a set-up file, which is read when the first client attaches and then at each change until
/// the last one has detached; `KIVO_LOG` in the environment goes before the levels of the file.
/// [any thread]
class Dispatcher {
public:
    explicit Dispatcher(std::string setupFile);

    void attach(void* client, ClientCall dispatcherGone, LevelChangedCall levelChanged);
    /// Waits for a call to this client that runs. With the last client the watch over the file ends and
    /// the sinks are closed.
    void detach(void* client);
    /// Ends the watch and tells all clients that are still attached.
    void goAway();

    /// The identity of a logger is its place in the order of first use, from 1 on.
    void getLogger(const char* name, std::uint64_t* id, std::uint32_t* level);
    void log(std::uint64_t id, std::uint32_t level, const char* text);
    void observe(const char* pattern, std::uint32_t level, KivoDispatcherObserver observer, void* context);

private:
    struct Client {
        Client(ClientCall dispatcherGoneCall, LevelChangedCall levelChangedCall)
            : dispatcherGone(dispatcherGoneCall)
            , levelChanged(levelChangedCall)
        {
        }
        const ClientCall dispatcherGone;
        const LevelChangedCall levelChanged;
        std::mutex calls; // held over each call to the client; guards the next
        bool detached = false;
    };

    struct NamedLogger {
        NamedLogger(const char* name, spdlog::sink_ptr sink, std::uint32_t levelOfRules);
        spdlog::logger logger;
        std::atomic<std::uint32_t> level; // by the rules
    };

    struct Observation {
        std::string pattern;
        std::uint32_t level = 0;
        KivoDispatcherObserver observer = nullptr;
        void* context = nullptr;
        bool wants(const std::string& name) const { return observer != nullptr && nameFits(pattern, name); }
    };

    void look(bool changed);
    void beginWatch();
    void takeSetup();
    void openSinks(const SinkSetup& setup, std::vector<std::string>& complaints);
    void tellLevels();
    void show(const std::string& name, std::uint32_t level, const char* text);
    std::uint32_t levelForClients(const NamedLogger& logger);
    std::shared_ptr<NamedLogger> loggerOf(std::uint64_t id);

    const std::string m_setupFile;
    const spdlog::sink_ptr m_stderr;
    const std::shared_ptr<spdlog::sinks::dist_sink_mt> m_sinks;

    // Keeps the tellers of levels apart, so that what a client hears last is true. Of all locks only this
    // one and the client's own are held over a call to a client: such a call may have to wait for another
    // thread that stands in attach or getLogger.
    std::mutex m_tellMutex;
    std::atomic<bool> m_tellAgain{false};

    std::mutex m_setupMutex; // guards the rest of this group, and m_watch
    std::map<void*, std::shared_ptr<Client>> m_clients;
    std::string m_environment; // the value of KIVO_LOG
    std::optional<SinkSetup> m_openSinks;
    std::vector<std::string> m_told;

    std::mutex m_namesMutex; // guards the next three; taken behind m_setupMutex
    LevelRules m_rules;
    std::map<std::string, std::uint64_t, std::less<>> m_ids;
    std::vector<std::shared_ptr<NamedLogger>> m_loggers;

    std::shared_mutex m_observationMutex; // taken behind m_namesMutex
    Observation m_observation;

    std::unique_ptr<FileWatch> m_watch; // last: its thread uses the others
};

} // namespace kivo::dispatcher
