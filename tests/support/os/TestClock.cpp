#include "tests/support/os/TestClock.h"

#include "support/platform/os/Clock.h"
#include "support/platform/os/EventLog.h"

#include <atomic>
#include <mutex>
#include <thread>
#include <utility>

namespace mesk::tests {

namespace {

constexpr std::uint64_t nsPerMs = 1000000;

std::mutex mutex; // guards what follows
std::uint64_t allSleepsMs = 0;
std::function<void(std::uint32_t)> sleepObserver;
std::vector<std::string> allRecords;

// Goes on through a reset: time never goes back.
std::atomic<std::uint64_t> nowNs{nsPerMs};

} // namespace

void TestClock::reset()
{
    const std::lock_guard<std::mutex> lock(mutex);
    allSleepsMs = 0;
    sleepObserver = nullptr;
}

std::uint64_t TestClock::sleptMs()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return allSleepsMs;
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

using namespace mesk::tests;

void sleepMs(std::uint32_t milliseconds)
{
    std::unique_lock<std::mutex> lock(mutex);
    allSleepsMs += milliseconds;
    const auto observer = sleepObserver;
    lock.unlock();
    nowNs += milliseconds * nsPerMs;
    if (observer)
        observer(milliseconds);
    // A thread that paces itself by sleeps shall not starve the others.
    std::this_thread::yield();
}

std::uint64_t monotonicNowNs()
{
    return nowNs += nsPerMs;
}

void reportEventLogError(const char* text)
{
    const std::lock_guard<std::mutex> lock(mutex);
    allRecords.emplace_back(text);
}

} // namespace kivo::templates::platform::os
