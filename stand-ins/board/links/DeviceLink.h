#pragma once

#include "stand-ins/board/links/Wire.h"

#include <string>

namespace emulated_board {

/// A link to a network device of this machine. One thread carries its frames to the port, another one those
/// of the port to it. What goes wrong is counted; a device that goes away is told once, and what the port
/// sends afterwards is refused.
class DeviceLink : public Link {
public:
    void start() override;
    void stop() override;
    bool send(WireFrame frame) override;
    bool isBusy() const override;
    KivoBoardLinkCounters counters() const override;

protected:
    enum class Outcome {
        done,
        nothing, ///< no frame came in time, or the wait was ended
        refused, ///< the other side doesn't take such a frame
        noRoom,  ///< not now; a little later, maybe
        failed,
        gone, ///< for good; goneReason says why
    };

    /// @param name the link and its port, as it is told to users.
    /// Who derives calls stop in the destructor.
    DeviceLink(std::string name, LineEnd& end);

    /// [receiving thread] Waits a bounded time for a frame, which has no check sequence.
    virtual Outcome receive(std::vector<std::uint8_t>& frame) = 0;
    /// [sending thread] Never waits.
    virtual Outcome transmit(const std::uint8_t* frame, std::size_t size) = 0;
    /// [any thread] Ends the wait of `receive`, and all to come.
    virtual void interrupt() = 0;
    /// [one thread at a time] Frames of the device that found no room on their way here.
    virtual std::uint64_t lostFrames() const = 0;
    /// [receiving or sending thread]
    virtual std::string goneReason() const = 0;

private:
    void receiveAll();
    void carry(const WireFrame& frame, const std::atomic<bool>& stopped);
    void count(Outcome outcome);

    const std::string m_name;
    LineEnd& m_end;
    Wire m_out;
    std::atomic<bool> m_stopped{false};
    std::thread m_receiver;
    mutable std::mutex m_lostMutex;
};

} // namespace emulated_board
