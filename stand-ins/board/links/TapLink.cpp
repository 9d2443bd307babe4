#include "stand-ins/board/links/TapLink.h"

#include "stand-ins/board/links/Rights.h"

#include <fmt/core.h>
#include <stdexcept>

namespace emulated_board {

namespace {

using kivo::templates::platform::os::TapDevice;

constexpr unsigned readMaxMs = 1000;

/// @returns null for a device that is taken, where that may be.
std::unique_ptr<TapDevice> openDevice(const std::string& name, bool mayBeTaken)
{
    TapDevice::Opening opening = TapDevice::open(name);
    if (opening.device || (opening.isBusy && mayBeTaken))
        return std::move(opening.device);
    if (opening.isForbidden)
        opening.errorText += fmt::format("; {}, or let root make the device for this user: "
                                         "ip tuntap add {} mode tap user NAME && ip link set {} up",
                                         adviceOnRights("net_admin"), name, name);
    throw std::runtime_error(opening.errorText);
}

} // namespace

TapLink::TapLink(const std::string& device, const std::string& portName, LineEnd& end)
    : DeviceLink(fmt::format("tap:{} at {}", device, portName), end)
    , m_deviceName(device)
    , m_device(openDevice(device, true))
    , m_buffer(frameSizeMaxBytes + 1) // a frame that fills it is too long
{
}

TapLink::~TapLink()
{
    stop();
}

void TapLink::start()
{
    if (!m_device)
        m_device = openDevice(m_deviceName, false);
    DeviceLink::start();
}

DeviceLink::Outcome TapLink::outcomeOf(TapDevice::Outcome outcome)
{
    switch (outcome) {
    case TapDevice::Outcome::Done:
        return Outcome::done;
    case TapDevice::Outcome::Nothing:
        return Outcome::nothing;
    case TapDevice::Outcome::Refused:
        return Outcome::refused;
    case TapDevice::Outcome::NoRoom:
        return Outcome::noRoom;
    case TapDevice::Outcome::Gone:
        return Outcome::gone;
    case TapDevice::Outcome::Failed:
        break;
    }
    return Outcome::failed;
}

DeviceLink::Outcome TapLink::receive(std::vector<std::uint8_t>& frame)
{
    std::size_t count = 0;
    const auto outcome = m_device->read(m_buffer.data(), m_buffer.size(), count, readMaxMs);
    frame.assign(m_buffer.data(), m_buffer.data() + count);
    return outcomeOf(outcome);
}

DeviceLink::Outcome TapLink::transmit(const std::uint8_t* frame, std::size_t size)
{
    return outcomeOf(m_device->write(frame, size));
}

void TapLink::interrupt()
{
    if (m_device)
        m_device->interrupt();
}

std::uint64_t TapLink::lostFrames() const
{
    return m_device->lostFrames();
}

std::string TapLink::goneReason() const
{
    return "the device was deleted";
}

} // namespace emulated_board
