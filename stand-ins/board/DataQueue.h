#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace emulated_board {

/// Set in the last word of what the firmware puts into a queue as one piece.
constexpr std::uint32_t endOfTransmission = 0x10000;

/// A hardware queue of 32-bit words with a capacity and a count of the words that found no room.
/// [any thread]
class DataQueue {
public:
    /// @param readPartialWords whether a read rounds up what is no whole number of words, so that it
    /// writes behind what it was asked for.
    void powerOn(std::uint32_t capacityWords, bool readPartialWords);

    /// Takes up to `sizeBytes` bytes of whole words. Waits until all of them are there; when the
    /// time-out runs out it takes what is there, and is a time-out only if that is nothing. `usable`
    /// is asked while it waits: false ends the wait with `statusBadHandle`.
    /// @returns bytes delivered, or a negative status.
    std::int32_t read(void* buffer, std::uint32_t sizeBytes, std::chrono::milliseconds timeout,
                      const std::function<bool()>& usable);
    /// Lets the waiting readers ask `usable` again.
    void wakeReaders();
    /// Empties the queue; the count of lost words stays.
    void clear();

    /// Puts all the words in or, if they don't fit, none of them, which counts them as lost. Waits for
    /// room until `stopped`, and no longer than `patience` where there is one. After a patience that ran
    /// out nobody seems to listen: the next ones have none until somebody reads. `accepted` is called
    /// before anybody can read the words.
    bool put(const std::vector<std::uint32_t>& words, std::optional<std::chrono::milliseconds> patience,
             const std::atomic<bool>& stopped, const std::function<void()>& accepted);
    /// Puts as many in as there is room for, and gives their number; the others are lost.
    std::uint32_t putSome(const std::uint32_t* words, std::uint32_t count);

    std::uint32_t size() const;
    /// Whether somebody waits for room at the moment.
    bool isCongested() const { return m_waiters.load(std::memory_order_relaxed) != 0; }
    std::int32_t lostWords() const;
    void setLostWords(std::int32_t count);

private:
    std::uint32_t roomWords() const { return std::uint32_t(m_ring.size()) - m_size; }
    void append(const std::uint32_t* words, std::uint32_t count);
    void lose(std::uint64_t count);
    void madeRoom();

    mutable std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::condition_variable m_taken;
    std::vector<std::uint32_t> m_ring;
    std::uint32_t m_first = 0;
    std::uint32_t m_size = 0;
    std::int32_t m_lostWords = 0;
    bool m_readPartialWords = false;
    bool m_stalled = false;
    std::atomic<std::uint32_t> m_waiters{0};
};

} // namespace emulated_board
