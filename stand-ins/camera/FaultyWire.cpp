#include "stand-ins/camera/FaultyWire.h"

#include "packets/ByteArrayHelpers.h"

namespace emulated_camera {

using mesk::stack::TimePoint;

namespace {

constexpr int idAt = 6; // of an acknowledge

} // namespace

FaultyWire::FaultyWire(const Faults& faults, CameraCounters& counters,
                       mesk::stack::NetworkNode::SendFrame send)
    : m_faults(faults)
    , m_counters(counters)
    , m_send(std::move(send))
    , m_random(faults.seed)
{
}

QByteArray FaultyWire::spoil(const QByteArray& acknowledge)
{
    QByteArray spoilt = acknowledge;
    if (happens(m_faults.wrongIds)) {
        ++m_counters.wrongIds;
        const auto change = quint16(m_random() % 0xffff + 1); // never 0
        qToBigEndian(quint16(readField<quint16>(spoilt, idAt) ^ change), spoilt.data() + idAt);
    }
    if (happens(m_faults.cut)) {
        ++m_counters.acknowledgesCut;
        spoilt.truncate(int(m_random() % quint32(spoilt.size())));
    }
    return spoilt;
}

void FaultyWire::send(const QByteArray& frame)
{
    ++m_counters.framesOut;
    if (m_faults.silent || happens(m_faults.loss)) {
        ++m_counters.framesLost;
        return;
    }
    const bool twice = happens(m_faults.duplicates);
    sendOnce(frame);
    if (twice) {
        ++m_counters.framesDoubled;
        sendOnce(frame);
    }
}

void FaultyWire::expire(TimePoint now)
{
    m_now = now;
    while (!m_delayed.empty() && m_delayed.front().due <= now) {
        const QByteArray frame = m_delayed.front().frame;
        m_delayed.pop_front();
        m_send(frame);
    }
}

TimePoint FaultyWire::nextDeadline() const
{
    return m_delayed.empty() ? mesk::stack::never : m_delayed.front().due;
}

// Draws only for what can happen, so that one kind of fault doesn't change another.
bool FaultyWire::happens(double probability)
{
    constexpr double range = 4294967296.0;
    return probability > 0 && double(m_random()) < probability * range;
}

void FaultyWire::sendOnce(const QByteArray& frame)
{
    if (m_faults.delay.count() == 0) {
        m_send(frame);
    } else if (m_delayed.size() < delayedMax) {
        ++m_counters.framesDelayed;
        m_delayed.push_back({m_now + m_faults.delay, frame});
    } else {
        ++m_counters.framesLost;
    }
}

} // namespace emulated_camera
