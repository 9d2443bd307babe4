#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace kivo::templates::platform::os {

/// The program's end of a TAP device: a network interface of this machine whose cable ends here. Whole
/// Ethernet frames go through it, without check sequence; the system fills none up to the least size.
///
/// One thread may read while another one writes.
class TapDevice {
public:
    enum class Outcome {
        Done,
        Nothing, ///< no frame came in time, or the wait was ended
        Refused, ///< the frame is too short for the device, or longer than its MTU allows
        NoRoom,  ///< the system has no room for the frame at the moment
        Failed,  ///< not this time: the interface is down, say
        Gone,    ///< the device was deleted
    };

    struct Opening;
    /// Attaches to the TAP device of that name and brings it up. If there is none it is made, and goes with
    /// the object.
    static Opening open(const std::string& name);
    TapDevice(const TapDevice&) = delete;
    TapDevice& operator=(const TapDevice&) = delete;
    ~TapDevice();

    /// Waits for a frame that the system sends through the interface.
    /// @param[out] count the frame's bytes in the buffer; what has no room there is cut off.
    Outcome read(void* buffer, std::size_t size, std::size_t& count, unsigned timeoutMs);
    /// Hands the system a frame as if it had come over the cable. Never waits.
    Outcome write(const void* frame, std::size_t size);
    /// Ends the wait of a reader, and all to come. [any thread]
    void interrupt();

    /// Frames of the system that found no room on their way here, since the object was made. [any thread]
    std::uint64_t lostFrames() const;

private:
    struct D;
    explicit TapDevice(std::unique_ptr<D> parts);
    std::unique_ptr<D> d;
};

struct TapDevice::Opening {
    std::unique_ptr<TapDevice> device; ///< null if it can't be had
    std::string errorText;             ///< why, for the user
    bool isForbidden = false;          ///< for want of a right
    bool isBusy = false;               ///< a program is attached to it
};

} // namespace kivo::templates::platform::os
