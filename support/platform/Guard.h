#pragma once

namespace kivo::templates::patterns {

/// Base of the scope guards: remembers what is guarded and whether this guard holds it. It locks and
/// unlocks nothing by itself. One thread at a time.
template <typename T>
class Guard {
public:
    explicit Guard(T toGuard)
        : guarded(toGuard)
    {
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    virtual ~Guard() = default;

protected:
    T guarded;
    bool locked = true;
};

} // namespace kivo::templates::patterns
