#include "stand-ins/board/DataQueue.h"

#include "stand-ins/board/Status.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace emulated_board {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t wordBytes = 4;

// Whoever waits for room looks at its stop flag this often.
constexpr std::chrono::milliseconds stopLook(10);

} // namespace

void DataQueue::powerOn(std::uint32_t capacityWords, bool readPartialWords)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_readPartialWords = readPartialWords;
    if (m_ring.size() != capacityWords)
        m_ring.assign(capacityWords, 0);
    m_lostWords = 0;
    m_first = 0;
    m_size = 0;
    madeRoom();
}

std::int32_t DataQueue::read(void* buffer, std::uint32_t sizeBytes, std::chrono::milliseconds timeout,
                             const std::function<bool()>& usable)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const std::uint32_t asked =
        std::uint32_t((sizeBytes + (m_readPartialWords ? wordBytes - 1 : 0)) / wordBytes);
    if (m_size < asked) {
        m_stalled = false;
        const auto deadline = Clock::now() + timeout;
        while (m_size < asked && usable()) {
            if (m_arrived.wait_until(lock, deadline) == std::cv_status::timeout)
                break;
        }
        if (!usable())
            return statusBadHandle;
        if (m_size == 0)
            return statusTimeout;
    }
    const std::uint32_t count = std::min(asked, m_size);
    const std::uint32_t straight = std::min(count, std::uint32_t(m_ring.size()) - m_first);
    if (count != 0) {
        // The buffer is the caller's bytes, aligned or not.
        std::memcpy(buffer, m_ring.data() + m_first, straight * wordBytes);
        std::memcpy(static_cast<char*>(buffer) + straight * wordBytes, m_ring.data(),
                    (count - straight) * wordBytes);
        m_first = (m_first + count) % std::uint32_t(m_ring.size());
        m_size -= count;
    }
    madeRoom();
    return std::int32_t(count * wordBytes);
}

void DataQueue::wakeReaders()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_arrived.notify_all();
}

void DataQueue::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_first = 0;
    m_size = 0;
    madeRoom();
}

bool DataQueue::put(const std::vector<std::uint32_t>& words,
                    std::optional<std::chrono::milliseconds> patience, const std::atomic<bool>& stopped,
                    const std::function<void()>& accepted)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const auto fits = [&] { return words.size() <= roomWords(); };
    if (!fits() && words.size() <= m_ring.size() && !(patience && m_stalled)) {
        const auto begin = Clock::now();
        const auto waits = [&] {
            return !stopped.load(std::memory_order_relaxed) &&
                   (!patience || Clock::now() - begin < *patience);
        };
        m_waiters.fetch_add(1, std::memory_order_relaxed);
        while (!fits() && waits())
            m_taken.wait_for(lock, stopLook);
        m_waiters.fetch_sub(1, std::memory_order_relaxed);
        m_stalled = !fits();
    }
    if (!fits()) {
        lose(words.size());
        return false;
    }
    accepted();
    append(words.data(), std::uint32_t(words.size()));
    return true;
}

std::uint32_t DataQueue::putSome(const std::uint32_t* words, std::uint32_t count)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::uint32_t fitting = std::min(count, roomWords());
    append(words, fitting);
    lose(count - fitting);
    return fitting;
}

void DataQueue::append(const std::uint32_t* words, std::uint32_t count)
{
    if (count == 0)
        return;
    const auto capacity = std::uint32_t(m_ring.size());
    const std::uint32_t at = (m_first + m_size) % capacity;
    const std::uint32_t straight = std::min(count, capacity - at);
    std::copy_n(words, straight, m_ring.begin() + at);
    std::copy_n(words + straight, count - straight, m_ring.begin());
    m_size += count;
    m_arrived.notify_all();
}

void DataQueue::lose(std::uint64_t count)
{
    constexpr std::uint64_t most = std::numeric_limits<std::int32_t>::max();
    const auto now = std::uint64_t(std::max(m_lostWords, 0));
    if (count != 0)
        m_lostWords = std::int32_t(std::min(most, now + count));
}

void DataQueue::madeRoom()
{
    m_stalled = false;
    m_taken.notify_all();
}

std::uint32_t DataQueue::size() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_size;
}

std::int32_t DataQueue::lostWords() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lostWords;
}

void DataQueue::setLostWords(std::int32_t count)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lostWords = count;
}

} // namespace emulated_board
