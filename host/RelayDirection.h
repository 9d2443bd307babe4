#pragma once

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <string>

namespace mesk::host {

struct OutgoingFrame;

/// What one direction of a relay has counted.
struct RelayCounts {
    std::uint64_t sent = 0;
    std::uint64_t received = 0;
    std::uint64_t bytes = 0;     ///< of what was received
    std::uint64_t different = 0; ///< arrived, but not as it was sent
    std::uint64_t filledUp = 0;
    std::uint64_t madeEven = 0;
    std::uint64_t refused = 0; ///< not sent
    std::uint64_t lost = 0;

    /// Something went over, and all of it arrived as it was.
    bool good() const { return sent != 0 && different == 0 && lost == 0 && received == sent; }
};

/// One direction of a relay: a thread that sends and a thread that receives meet here. A window of
/// frames under way keeps the sender from overrunning the receive queue. [any thread]
class RelayDirection {
public:
    /// How long nothing may arrive before what is under way counts as lost, and after how many times
    /// in a row the rest is not tried any more.
    static constexpr std::uint32_t silenceMaxMs = 2000;
    static constexpr unsigned silencesMax = 3;
    static constexpr std::size_t windowFrames = 16;

    RelayDirection();
    ~RelayDirection();
    RelayDirection(const RelayDirection&) = delete;
    RelayDirection& operator=(const RelayDirection&) = delete;

    /// The sender is about to send a frame: waits for room in the window.
    /// @returns false if no more is to be sent.
    bool sending(const OutgoingFrame& frame);
    /// No more comes from the sender.
    /// @param error why, if it isn't the end of the capture.
    void senderDone(const std::string& error);

    void arrived(const QByteArray& bytes);
    /// The receiver has found nothing.
    /// @returns whether there is nothing left to wait for.
    bool endedAtSilence();
    /// The receiver has left; the sender is to leave as well.
    void stop();

    RelayCounts counts() const;
    bool gaveUp() const;
    std::string error() const;

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::host
