#pragma once

#include "stand-ins/camera/CameraCounters.h"
#include "stand-ins/camera/CameraSetup.h"
#include "stand-ins/camera/ControlPrivilege.h"

#include <memory>
#include <optional>

namespace emulated_camera {

/// A GigE Vision device as it behaves on the wire: address, echo, discovery, registers, events and actions,
/// but no stream. It has no thread, no clock and no socket: frames and times are handed in, frames come out.
/// All that input can let grow is bounded. [one thread at a time]
class CameraDevice {
public:
    /// @param send takes whole Ethernet frames, see mesk::stack::NetworkNode.
    CameraDevice(const CameraSetup& setup, mesk::stack::NetworkNode::SendFrame send);
    CameraDevice(const CameraDevice&) = delete;
    CameraDevice& operator=(const CameraDevice&) = delete;
    ~CameraDevice();

    /// Begins, or begins again as after a loss of power: registers get their initial values, but for user
    /// name, persistent address and how the address is found. Until then the device is deaf.
    void powerOn(mesk::stack::TimePoint now);
    void receive(const QByteArray& frame, mesk::stack::TimePoint now);
    /// Does what is due. To be called at nextDeadline() or later.
    void expire(mesk::stack::TimePoint now);
    mesk::stack::TimePoint nextDeadline() const;

    /// The current address, and in a word where it is from: none, forced, persistent, dhcp, link-local.
    mesk::stack::NetAddress address() const;
    const char* addressMethod() const;
    /// Who has the control privilege.
    std::optional<Application> controller() const;
    CameraCounters counters() const;

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace emulated_camera
