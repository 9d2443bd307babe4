#pragma once

#include <QByteArray>

#include <cstdint>
#include <deque>

namespace mesk::host {

/// Holds what arrives against what was sent, in order, and finds back into step behind a loss. One
/// thread at a time.
class FrameComparison {
public:
    /// A frame is on its way, with the bytes that are to arrive.
    void expect(const QByteArray& bytes);
    void arrived(const QByteArray& bytes);
    /// Nothing more comes: what is outstanding is lost.
    void giveUp();

    /// Frames sent and neither arrived nor given up.
    std::size_t outstanding() const { return m_expected.size(); }
    std::uint64_t received() const { return m_received; }
    std::uint64_t receivedBytes() const { return m_receivedBytes; }
    /// Frames that arrived with bytes that nobody sent.
    std::uint64_t different() const { return m_different + m_unmatched; }
    std::uint64_t lost() const { return m_lost; }

private:
    void settle(std::size_t frames);

    std::deque<QByteArray> m_expected;
    /// Arrivals in a row without a match. Each stands for one of the frames that turn out to be skipped.
    std::size_t m_unmatched = 0;
    std::uint64_t m_received = 0;
    std::uint64_t m_receivedBytes = 0;
    std::uint64_t m_different = 0;
    std::uint64_t m_lost = 0;
};

} // namespace mesk::host
