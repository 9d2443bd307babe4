#include "benchmarks/interface/BenchPort.h"
#include "interface/PhysicalNetworkInterfaceEventQueue.h"
#include "support/platform/SynchronizedQueueInterruptException.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace mesk::benchmarks {

namespace {

using Clock = std::chrono::steady_clock;
using Event = boost::shared_ptr<kivo::core::mesk::PhysicalNetworkInterfaceEvent>;

/// The bare hand-over: a time that one thread leaves and another waits for.
class HandOver {
public:
    void give(Clock::time_point time)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_time = time;
        m_isThere = true;
        m_changed.notify_one();
    }
    Clock::time_point take()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_isThere; });
        m_isThere = false;
        return m_time;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Clock::time_point m_time;
    bool m_isThere = false;
};

/// Times the way from `give` on this thread to the end of `take` on another, which waits by then.
/// `take` says false when there will be no more.
void timeTheWay(benchmark::State& state, const std::function<void()>& give, const std::function<bool()>& take,
                const std::function<void()>& end)
{
    constexpr std::chrono::microseconds untilAllWait(50);
    HandOver arrival;
    std::thread taker([&] {
        while (take()) {
            arrival.give(Clock::now());
        }
    });
    while (state.KeepRunning()) {
        std::this_thread::sleep_for(untilAllWait);
        const auto start = Clock::now();
        give();
        state.SetIterationTime(std::chrono::duration<double>(arrival.take() - start).count());
    }
    end();
    taker.join();
}

void bareHandOver(benchmark::State& state)
{
    HandOver way;
    const auto never = Clock::time_point::max();
    timeTheWay(
        state, [&] { way.give(Clock::now()); }, [&] { return way.take() != never; },
        [&] { way.give(never); });
}

void eventHandOver(benchmark::State& state)
{
    const auto port = openBenchPort();
    const auto addReport = benchBoardFunction<BenchAddReport>("benchAddReport");
    const auto events = port->eventQueue();
    events->enabled = true;
    port->startWorkers();
    const auto take = [&] {
        try {
            Event event;
            events->queue->pop(event);
            return true;
        } catch (const kivo::templates::platform::SynchronizedQueueInterruptException&) {
            return false;
        }
    };
    timeTheWay(state, addReport, take, [&] { port->requestStop(); });
    port->finish();
}

BENCHMARK(eventHandOver)->UseManualTime();
BENCHMARK(bareHandOver)->UseManualTime();

} // namespace

} // namespace mesk::benchmarks
