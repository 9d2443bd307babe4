#pragma once

#include "support/platform/SynchronizedQueueInterruptException.h"
#include "support/platform/os/Event.h"

#include <atomic>
#include <cstdint>
#include <list>
#include <mutex>
#include <utility>

namespace kivo::templates::platform {

/// A bounded queue between threads. `push` and `pop` block; `interrupt` wakes whoever waits and ends
/// the queue for good. The two sides of one queue may live in two binaries that share the record, as long
/// as both are of one build: each brings its own code of the events. [any thread]
template <typename T>
class SynchronizedQueue {
public:
    explicit SynchronizedQueue(std::uint64_t capacity)
        : m_capacity(capacity)
        , m_notFullEvent(capacity > 0)
    {
    }
    SynchronizedQueue(const SynchronizedQueue&) = delete;
    SynchronizedQueue& operator=(const SynchronizedQueue&) = delete;
    virtual ~SynchronizedQueue() = default;

    /// Adds an item, and waits for room first.
    /// @param atFront ahead of all others, otherwise behind them.
    /// @throws SynchronizedQueueInterruptException once the queue was interrupted; an item that went in
    ///     at that very moment stays in.
    void push(T item, bool atFront);

    /// Takes the first item, and waits for one.
    /// @throws SynchronizedQueueInterruptException once the queue was interrupted, items or not.
    void pop(T& item);

    /// Takes the first item if there is one.
    /// @returns whether `item` was set.
    /// @throws SynchronizedQueueInterruptException as `pop`.
    bool tryPop(T& item);

    /// Wakes all waiting threads and makes every later `push` and `pop` throw.
    void interrupt();

private:
    bool enter(std::list<T>& node, bool atFront);
    bool take(T& item);

    const std::uint64_t m_capacity;
    std::list<T> m_items;          ///< oldest first
    os::CriticalSection m_section; ///< guards the items
    os::ManualResetEvent m_notEmptyEvent{false};
    os::ManualResetEvent m_notFullEvent;
    std::atomic<bool> m_interrupted{false};
};

template <typename T>
void SynchronizedQueue<T>::push(T item, bool atFront)
{
    // The list node is made and given up outside the section, which then only links it.
    std::list<T> node;
    node.push_back(std::move(item));
    while (!m_interrupted) {
        m_notFullEvent.wait();
        if (enter(node, atFront)) {
            if (m_interrupted)
                break;
            return;
        }
    }
    throw SynchronizedQueueInterruptException();
}

template <typename T>
bool SynchronizedQueue<T>::enter(std::list<T>& node, bool atFront)
{
    const std::lock_guard<os::CriticalSection> lock(m_section);
    if (m_items.size() >= m_capacity || m_interrupted)
        return false;
    m_items.splice(atFront ? m_items.begin() : m_items.end(), node);
    m_notEmptyEvent.set();
    if (m_items.size() >= m_capacity)
        m_notFullEvent.reset();
    return true;
}

template <typename T>
void SynchronizedQueue<T>::pop(T& item)
{
    while (!m_interrupted) {
        m_notEmptyEvent.wait();
        if (take(item))
            return;
    }
    throw SynchronizedQueueInterruptException();
}

template <typename T>
bool SynchronizedQueue<T>::tryPop(T& item)
{
    if (take(item))
        return true;
    if (m_interrupted)
        throw SynchronizedQueueInterruptException();
    return false;
}

template <typename T>
bool SynchronizedQueue<T>::take(T& item)
{
    std::list<T> node;
    {
        const std::lock_guard<os::CriticalSection> lock(m_section);
        if (m_items.empty() || m_interrupted)
            return false;
        node.splice(node.begin(), m_items, m_items.begin());
        if (m_items.empty())
            m_notEmptyEvent.reset();
        m_notFullEvent.set();
    }
    item = std::move(node.front());
    return true;
}

template <typename T>
void SynchronizedQueue<T>::interrupt()
{
    m_interrupted = true;
    // Under the section, so that no push or pop on its way out resets an event behind it.
    const std::lock_guard<os::CriticalSection> lock(m_section);
    m_notEmptyEvent.set();
    m_notFullEvent.set();
}

} // namespace kivo::templates::platform
