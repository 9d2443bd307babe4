#include "tests/support/os/TestClock.h"

#include "support/platform/os/Clock.h"
#include "support/platform/os/EventLog.h"

#include <atomic>
#include <mutex>
#include <numeric>
#include <thread>
#include <utility>

namespace mesk::tests {

namespace {

constexpr std::uint64_t nsPerMs = 1000000;

std::mutex mutex; // guards what follows
std::vector<std::uint32_t> allSleeps;
std::function<void(std::uint32_t)> sleepObserver;
std::vector<std::string> allRecords;

// Goes on through a reset: time never goes back.
std::atomic<std::uint64_t> nowNs{nsPerMs};

void sleep(std::uint32_t milliseconds)
{
    std::function<void(std::uint32_t)> observer;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        allSleeps.push_back(milliseconds);
        observer = sleepObserver;
    }
    nowNs += milliseconds * nsPerMs;
    if (observer)
        observer(milliseconds);
    // A thread that paces itself by sleeps shall not starve the others.
    std::this_thread::yield();
}

void record(const char* text)
{
    const std::lock_guard<std::mutex> lock(mutex);
    allRecords.emplace_back(text);
}

} // namespace

void TestClock::reset()
{
    const std::lock_guard<std::mutex> lock(mutex);
    allSleeps.clear();
    sleepObserver = nullptr;
}

std::uint64_t TestClock::sleptMs()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return std::accumulate(allSleeps.begin(), allSleeps.end(), std::uint64_t{0});
}

std::vector<std::uint32_t> TestClock::sleeps()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return allSleeps;
}

void TestClock::onSleep(std::function<void(std::uint32_t)> observer)
{
    const std::lock_guard<std::mutex> lock(mutex);
    sleepObserver = std::move(observer);
}

void TestEventLog::reset()
{
    const std::lock_guard<std::mutex> lock(mutex);
    allRecords.clear();
}

std::vector<std::string> TestEventLog::records()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return allRecords;
}

} // namespace mesk::tests

namespace kivo::templates::platform::os {

void sleepMs(std::uint32_t milliseconds)
{
    mesk::tests::sleep(milliseconds);
}

std::uint64_t monotonicNowNs()
{
    return mesk::tests::nowNs += mesk::tests::nsPerMs;
}

void reportEventLogError(const char* text)
{
    mesk::tests::record(text);
}

} // namespace kivo::templates::platform::os
