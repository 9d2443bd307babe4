#include "host/RelayDirection.h"

#include "host/FrameComparison.h"
#include "host/OutgoingFrame.h"
#include "support/platform/os/Clock.h"

#include <condition_variable>
#include <mutex>

namespace mesk::host {

namespace os = kivo::templates::platform::os;

namespace {

constexpr std::uint64_t nsPerMs = 1'000'000;

} // namespace

struct RelayDirection::D {
    mutable std::mutex mutex;
    std::condition_variable room;
    FrameComparison comparison;
    RelayCounts counts;
    std::string error;
    std::uint64_t lastSignNs = 0; ///< of life: an arrival, or a first frame under way
    unsigned silences = 0;
    bool senderDone = false;
    bool stopped = false;
};

RelayDirection::RelayDirection()
    : d(std::make_unique<D>())
{
}

RelayDirection::~RelayDirection() = default;

bool RelayDirection::sending(const OutgoingFrame& frame)
{
    std::unique_lock lock(d->mutex);
    if (frame.refused) {
        ++d->counts.refused;
        return !d->stopped;
    }
    // The receiver comes by at least every 100 ms and says stop when it leaves, so this wait ends.
    d->room.wait(lock, [this] { return d->stopped || d->comparison.outstanding() < windowFrames; });
    if (d->stopped) {
        return false;
    }
    if (d->comparison.outstanding() == 0) {
        d->lastSignNs = os::monotonicNowNs();
    }
    d->comparison.expect(frame.onWire());
    ++d->counts.sent;
    d->counts.filledUp += frame.filledUp ? 1 : 0;
    d->counts.madeEven += frame.madeEven ? 1 : 0;
    return true;
}

void RelayDirection::senderDone(const std::string& error)
{
    const std::lock_guard lock(d->mutex);
    d->senderDone = true;
    d->error = error;
}

void RelayDirection::arrived(const QByteArray& bytes)
{
    const std::lock_guard lock(d->mutex);
    d->comparison.arrived(bytes);
    d->lastSignNs = os::monotonicNowNs();
    d->silences = 0;
    d->room.notify_one();
}

bool RelayDirection::endedAtSilence()
{
    const std::lock_guard lock(d->mutex);
    if (d->comparison.outstanding() == 0) {
        return d->senderDone;
    }
    if (os::monotonicNowNs() - d->lastSignNs < silenceMaxMs * nsPerMs) {
        return false;
    }
    d->comparison.giveUp();
    ++d->silences;
    d->room.notify_one();
    return d->silences >= silencesMax;
}

void RelayDirection::stop()
{
    const std::lock_guard lock(d->mutex);
    d->stopped = true;
    d->room.notify_one();
}

RelayCounts RelayDirection::counts() const
{
    const std::lock_guard lock(d->mutex);
    RelayCounts counts = d->counts;
    counts.received = d->comparison.received();
    counts.bytes = d->comparison.receivedBytes();
    counts.different = d->comparison.different();
    counts.lost = d->comparison.lost();
    return counts;
}

bool RelayDirection::gaveUp() const
{
    const std::lock_guard lock(d->mutex);
    return d->silences >= silencesMax;
}

std::string RelayDirection::error() const
{
    const std::lock_guard lock(d->mutex);
    return d->error;
}

} // namespace mesk::host
