#include "host/Stopwatch.h"

#include "support/platform/os/Clock.h"

#include <cmath>

namespace mesk::host {

namespace os = kivo::templates::platform::os;

Stopwatch::Stopwatch()
    : m_startNs(os::monotonicNowNs())
{
}

double Stopwatch::seconds() const
{
    constexpr double nsPerSecond = 1e9;
    return static_cast<double>(os::monotonicNowNs() - m_startNs) / nsPerSecond;
}

double Stopwatch::roundedSeconds() const
{
    constexpr double microseconds = 1e6;
    return std::round(seconds() * microseconds) / microseconds;
}

} // namespace mesk::host
