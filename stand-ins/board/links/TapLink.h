#pragma once

#include "stand-ins/board/links/DeviceLink.h"
#include "support/platform/os/TapDevice.h"

namespace emulated_board {

/// A cable to a TAP device, hence to this machine's own network stack. The device is made if it is not
/// there, and then goes with the link.
class TapLink : public DeviceLink {
public:
    /// @param portName how the port is told to users.
    /// Throws std::runtime_error if the device can't be had. One that is taken may be free at the start: the
    /// link that this one replaces may hold it.
    TapLink(const std::string& device, const std::string& portName, LineEnd& end);
    ~TapLink() override;

    void start() override;

private:
    static Outcome outcomeOf(kivo::templates::platform::os::TapDevice::Outcome outcome);
    Outcome receive(std::vector<std::uint8_t>& frame) override;
    Outcome transmit(const std::uint8_t* frame, std::size_t size) override;
    void interrupt() override;
    std::uint64_t lostFrames() const override;
    std::string goneReason() const override;

    const std::string m_deviceName;
    std::unique_ptr<kivo::templates::platform::os::TapDevice> m_device; // null while it is taken
    std::vector<std::uint8_t> m_buffer;
};

} // namespace emulated_board
