#include "host/FrameComparison.h"

#include <algorithm>

namespace mesk::host {

void FrameComparison::expect(const QByteArray& bytes)
{
    m_expected.push_back(bytes);
}

void FrameComparison::arrived(const QByteArray& bytes)
{
    ++m_received;
    m_receivedBytes += static_cast<std::uint64_t>(bytes.size());
    const auto match = std::find(m_expected.begin(), m_expected.end(), bytes);
    if (match != m_expected.end()) {
        settle(static_cast<std::size_t>(match - m_expected.begin()));
        m_expected.pop_front();
        return;
    }
    ++m_unmatched;
    if (m_unmatched >= m_expected.size()) {
        settle(m_expected.size());
    }
}

void FrameComparison::giveUp()
{
    settle(m_expected.size());
}

/// The first `frames` of the outstanding ones did not arrive as they were: as many as arrived unmatched
/// were changed on the way, the others never came.
void FrameComparison::settle(std::size_t frames)
{
    m_lost += frames - std::min(frames, m_unmatched);
    m_different += m_unmatched;
    m_unmatched = 0;
    m_expected.erase(m_expected.begin(), m_expected.begin() + static_cast<std::ptrdiff_t>(frames));
}

} // namespace mesk::host
