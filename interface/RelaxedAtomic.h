#pragma once

#include <atomic>

namespace kivo::core::mesk {

/// A field that several threads read and, as a rule, one thread writes. [any thread]
///
/// Reads and writes are single plain instructions without any order towards other memory: what a
/// plain field would be if the language let threads share one.
template <typename T>
class RelaxedAtomic {
public:
    RelaxedAtomic() = default;
    explicit RelaxedAtomic(T value)
        : m_value(value)
    {
    }
    RelaxedAtomic(const RelaxedAtomic&) = delete;
    RelaxedAtomic& operator=(const RelaxedAtomic&) = delete;
    ~RelaxedAtomic() = default;

    T get() const noexcept { return m_value.load(std::memory_order_relaxed); }
    operator T() const noexcept { return get(); }
    T operator=(T value) noexcept
    {
        m_value.store(value, std::memory_order_relaxed);
        return value;
    }

    /// Adds to the value. [one thread at a time: an addition that overlaps another gets lost]
    void add(T difference) noexcept { *this = static_cast<T>(get() + difference); }

private:
    std::atomic<T> m_value{};
};

} // namespace kivo::core::mesk
