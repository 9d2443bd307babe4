#include "stand-ins/dispatcher/FileWatch.h"

#include <chrono>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <tuple>
#include <utility>

namespace kivo::dispatcher {

namespace {

constexpr std::chrono::seconds lookInterval(1);

/// Starts a thread that takes no signal: those are meant for the threads of the program.
template <typename Run>
std::thread startWithoutSignals(Run run)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    struct Restore {
        const sigset_t& mask;
        ~Restore() { pthread_sigmask(SIG_SETMASK, &mask, nullptr); }
    } const restore{before};
    return std::thread(run);
}

} // namespace

bool FileWatch::State::operator==(const State& other) const
{
    return std::tie(device, node, sizeBytes, writtenS, writtenNs) ==
           std::tie(other.device, other.node, other.sizeBytes, other.writtenS, other.writtenNs);
}

FileWatch::FileWatch(std::string path, Look look)
    : m_path(std::move(path))
    , m_look(std::move(look))
    , m_seen(state())
    , m_thread(startWithoutSignals([this] { run(); }))
{
}

FileWatch::~FileWatch()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_end = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

FileWatch::State FileWatch::state() const
{
    struct stat file {};
    if (stat(m_path.c_str(), &file) != 0)
        return {};
    return {file.st_dev, file.st_ino, file.st_size, file.st_mtim.tv_sec, file.st_mtim.tv_nsec};
}

void FileWatch::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_wake.wait_for(lock, lookInterval, [this] { return m_end; })) {
        lock.unlock();
        // Taken before the file is read, so that a change meanwhile is seen at the next look.
        const State now = state();
        const bool changed = !(now == m_seen);
        m_seen = now;
        m_look(changed);
        lock.lock();
    }
}

} // namespace kivo::dispatcher
