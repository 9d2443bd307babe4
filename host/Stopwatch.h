#pragma once

#include <cstdint>

namespace mesk::host {

/// Time that has passed since the object was made. [any thread]
class Stopwatch {
public:
    Stopwatch();
    double seconds() const;
    /// To the microsecond, so that a text of it has no digits that mean nothing.
    double roundedSeconds() const;

private:
    std::uint64_t m_startNs;
};

} // namespace mesk::host
