#pragma once

#include "stand-ins/board/links/FrameCheckSequence.h"
#include "stand-ins/board/links/LinkTally.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <vector>

namespace emulated_board {

/// What a port's transmitter holds, and so the longest frame of any line.
constexpr std::size_t frameSizeMaxBytes = 16384;

/// A frame on its way.
struct WireFrame {
    std::vector<std::uint8_t> bytes;
    /// The sender's hardware makes the check sequence, so `bytes` ends before it, and it is right.
    /// Otherwise the last four bytes are the check sequence, right or not.
    bool sequenceByHardware = true;

    /// Its size without check sequence.
    std::size_t size() const
    {
        const std::size_t sequence = sequenceByHardware ? 0 : frameCheckSequenceBytes;
        return bytes.size() - std::min(bytes.size(), sequence);
    }
    bool isIntact() const { return sequenceByHardware || hasGoodFrameCheckSequence(bytes); }
};

/// How long a frame that arrives waits for room in the port's receive queue.
enum class Patience {
    flowControl, ///< as the port's set-up says: a while, as on a paused line, or not at all
    untilRead,   ///< as long as it takes
};

/// The port's side of a plug, for whatever is plugged in. [any thread]
class LineEnd {
public:
    virtual ~LineEnd() = default;
    /// Hands a frame to the port's receiver. `stopped` ends a wait early.
    /// @returns whether it came into the receive queue.
    virtual bool arrive(WireFrame frame, Patience patience, const std::atomic<bool>& stopped) = 0;
    /// The far end refused a frame that this port has sent, for its check sequence.
    virtual void refusedAtFarEnd() = 0;
};

/// What a port is plugged to. A link runs on threads of its own, which `start` begins and `stop` joins.
/// The line ends that it was made with outlive it.
class Link {
public:
    Link() = default;
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;
    virtual ~Link() = default;

    /// [one thread at a time] May be called once. Throws std::runtime_error if the link can't work.
    virtual void start() {}
    /// [one thread at a time] Nothing is delivered afterwards. May be called again.
    virtual void stop() {}
    /// [any thread] Somebody reads the port's receive queue, for the first time since the plug. Who sends
    /// on his own accord waits for this: a port that is opened empties its queue first. Never waits.
    virtual void readerCame() {}

    /// [any thread] Takes a frame that the port sends. Never waits.
    /// @returns false if there is no room for it.
    virtual bool send(WireFrame frame) = 0;
    /// [any thread] Whether the transmitter has to wait before it sends.
    virtual bool isBusy() const { return false; }
    /// [any thread] Whether it has no more to deliver to the port of its own.
    virtual bool isIdle() const { return true; }
    /// [any thread]
    virtual KivoBoardLinkCounters counters() const { return m_tally.counters(); }

protected:
    LinkTally m_tally;
};

} // namespace emulated_board
