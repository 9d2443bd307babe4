#include "host/Port.h"
#include "host/Session.h"
#include "host/gvcp/BootstrapRegister.h"
#include "host/gvcp/GvcpClient.h"
#include "host/net/Holder.h"

#include <fmt/format.h>

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>

// How many register reads a second go from a program through the plugin and the emulated board to the
// emulated camera and back, one outstanding at a time; beside it, in the same run, what two threads alone
// need to wake each other there and back.

namespace {

using Clock = std::chrono::steady_clock;
using namespace mesk::host;

constexpr auto measureTime = std::chrono::milliseconds(500);
constexpr int rounds = 5;
constexpr double readsPerSecondMin = 10000;

/// How often a second `once` can be done.
template <typename Once>
double rateOf(const Once& once)
{
    const auto start = Clock::now();
    std::uint64_t count = 0;
    while (Clock::now() - start < measureTime) {
        once();
        ++count;
    }
    return static_cast<double>(count) / std::chrono::duration<double>(Clock::now() - start).count();
}

/// Two threads that wake each other, as a sender and a link's thread do at best.
class HandOver {
public:
    HandOver()
        : m_other([this] { answer(); })
    {
    }
    ~HandOver()
    {
        say(State::ended);
        m_other.join();
    }
    HandOver(const HandOver&) = delete;
    HandOver& operator=(const HandOver&) = delete;

    void thereAndBack()
    {
        say(State::asked);
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_state == State::answered; });
    }

private:
    enum class State { answered, asked, ended };

    void say(State state)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_state = state;
        }
        m_changed.notify_all();
    }
    void answer()
    {
        for (;;) {
            {
                std::unique_lock lock(m_mutex);
                m_changed.wait(lock, [this] { return m_state != State::answered; });
                if (m_state == State::ended) {
                    return;
                }
            }
            say(State::answered);
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    State m_state = State::answered;
    std::thread m_other;
};

bool measure()
{
    Options options;
    options.rootFolder = MESK_ROOT_FOLDER;
    options.link = "camera";
    options.quiet = true;
    Session session(options);
    Holder holder(session);
    constexpr quint32 cameraAddress = 0xc0a84d14; // 192.168.77.20
    GvcpClient client(holder.node(), holder.loop(), IpAddress(cameraAddress), {});
    client.readRegister(BootstrapRegister::HeartbeatTimeout); // both sides know each other now

    HandOver handOver;
    double reads = 0;
    double handOvers = 0;
    for (int round = 0; round < rounds; ++round) {
        handOvers = std::max(handOvers, rateOf([&handOver] { handOver.thereAndBack(); }));
        reads =
            std::max(reads, rateOf([&client] { client.readRegister(BootstrapRegister::HeartbeatTimeout); }));
    }
    fmt::print("bare hand-over there and back  {:8.0f} a second\n"
               "register reads                 {:8.0f} a second, at least {:.0f}\n",
               handOvers, reads, readsPerSecondMin);
    session.close();
    return reads >= readsPerSecondMin;
}

} // namespace

int main()
{
    try {
        return measure() ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "mesk-register-reads: %s\n", error.what());
        return 1;
    }
}
