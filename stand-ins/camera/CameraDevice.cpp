#include "stand-ins/camera/CameraDevice.h"

#include "gvcp/GVCPPacket.h"
#include "packets/ByteArrayHelpers.h"
#include "stand-ins/camera/CameraDescription.h"
#include "stand-ins/camera/CameraGvcp.h"

#include <algorithm>

namespace emulated_camera {

using mesk::stack::Datagram;
using mesk::stack::NetAddress;
using mesk::stack::TimePoint;

namespace {

constexpr quint16 periodicEventId = 0x9002;
constexpr double nanosecondsPerSecond = 1e9, eventPeriodMaxNanoseconds = 3600e9;

CameraMemory makeMemory(const CameraSetup& setup)
{
    const CameraDescription description = CameraDescription::load(setup.zippedDescription);
    CameraMemory memory(description.bytes, description.fileName);
    const NetAddress& persistent = setup.persistentAddress;
    quint32 enabled = ipLinkLocal;
    if (setup.start == CameraSetup::Start::Persistent)
        enabled |= ipPersistent;
    if (setup.start == CameraSetup::Start::Dhcp)
        enabled |= ipDhcp;
    memory.setNumber(Register::IpConfiguration, enabled);
    memory.setNumber(Register::PersistentIp, persistent.address.toUInt32());
    memory.setNumber(Register::PersistentMask, persistent.mask().toUInt32());
    memory.setText(Register::ManufacturerName, "Emulated");
    memory.setText(Register::ModelName, "EC-1");
    memory.setText(Register::DeviceVersion, "1.0");
    memory.setText(Register::ManufacturerInfo, "emulated device without a stream");
    memory.setText(Register::SerialNumber, setup.serialNumber);
    memory.setText(Register::UserName, setup.userName);
    return memory;
}

} // namespace

struct CameraDevice::D {
    D(const CameraSetup& theSetup, mesk::stack::NetworkNode::SendFrame send)
        : setup(theSetup)
        , wire(setup.faults, counters, std::move(send))
        , node(setup.mac, [this](const QByteArray& frame) { wire.send(frame); })
        , memory(makeMemory(setup))
        , messages(memory, counters,
                   [this](const Application& to, const QByteArray& message, TimePoint now) {
                       node.sendUdp(to.address, to.port, GVCPPacket::Port, message, now);
                   })
        , registers(memory, messages, clock, counters)
        , addresses(node, [this](TimePoint) { publishAddress(); })
        , gvcp({node, memory, registers, messages, addresses, clock, wire, counters}, setup.pendingAfter)
    {
        node.bind(GVCPPacket::Port,
                  [this](const Datagram& datagram, TimePoint now) { gvcp.receive(datagram, now); });
    }

    void publishAddress()
    {
        const quint8* const mac = node.mac().constData();
        memory.setNumber(Register::MacHigh, qFromBigEndian<quint16>(mac));
        memory.setNumber(Register::MacLow, qFromBigEndian<quint32>(mac + 2));
        const NetAddress& own = node.address();
        if (memory.number(Register::CurrentIp) != own.address.toUInt32())
            leaveAddress();
        memory.setNumber(Register::CurrentIp, own.address.toUInt32());
        memory.setNumber(Register::CurrentMask, own.isThere() ? own.mask().toUInt32() : 0);
        memory.setNumber(Register::CurrentGateway, addresses.gateway().toUInt32());
    }

    // Nobody speaks to another address of the device but by a new beginning.
    void leaveAddress()
    {
        registers.releasePrivilege();
        gvcp.leaveAddress();
    }

    // One for each look at the clock at most: what was missed is not made good.
    void sendPeriodicEvent(TimePoint now)
    {
        if (nextEvent > now)
            return;
        nextEvent = std::max(nextEvent + eventPeriod(), now);
        messages.post({periodicEventId, ++periodicEvents}, clock.ticks(now), now);
    }
    mesk::stack::Duration eventPeriod() const
    {
        return std::chrono::nanoseconds(
            qint64(std::min(nanosecondsPerSecond / setup.eventsPerSecond, eventPeriodMaxNanoseconds)));
    }

    CameraSetup setup;
    CameraCounters counters;
    FaultyWire wire;
    mesk::stack::NetworkNode node;
    CameraMemory memory;
    DeviceClock clock;
    MessageChannel messages;
    RegisterAccess registers;
    AddressConfiguration addresses;
    CameraGvcp gvcp;
    TimePoint nextEvent = mesk::stack::never;
    quint64 periodicEvents = 0;
    bool isOn = false;
};

CameraDevice::CameraDevice(const CameraSetup& setup, mesk::stack::NetworkNode::SendFrame send)
    : d(std::make_unique<D>(setup, std::move(send)))
{
}

CameraDevice::~CameraDevice() = default;

void CameraDevice::powerOn(TimePoint now)
{
    d->isOn = true;
    d->wire.expire(now);
    d->memory.powerOn();
    d->memory.setNumber(Register::PendingTimeout, d->gvcp.pendingTimeoutMs());
    d->memory.setNumber(Register::ActionDeviceKey, d->setup.action.deviceKey);
    d->memory.setNumber(Register::ActionGroupKey, d->setup.action.groupKey);
    d->memory.setNumber(Register::ActionGroupMask, d->setup.action.groupMask);
    d->clock.reset(now);
    d->registers.powerOn();
    d->gvcp.powerOn();
    if (d->setup.eventsPerSecond > 0)
        d->nextEvent = now + d->eventPeriod();
    d->gvcp.configureAddress(now);
}

void CameraDevice::receive(const QByteArray& frame, TimePoint now)
{
    if (!d->isOn)
        return;
    expire(now);
    ++d->counters.framesIn;
    d->node.receive(frame, now);
}

void CameraDevice::expire(TimePoint now)
{
    if (!d->isOn)
        return;
    d->wire.expire(now);
    d->node.expire(now);
    d->addresses.expire(now);
    d->registers.expire(now);
    d->gvcp.expire(now);
    d->messages.expire(now);
    d->sendPeriodicEvent(now);
}

TimePoint CameraDevice::nextDeadline() const
{
    return std::min({d->wire.nextDeadline(), d->node.nextDeadline(), d->addresses.nextDeadline(),
                     d->registers.nextDeadline(), d->gvcp.nextDeadline(), d->messages.nextDeadline(),
                     d->nextEvent});
}

NetAddress CameraDevice::address() const
{
    return d->node.address();
}

const char* CameraDevice::addressMethod() const
{
    switch (d->addresses.method()) {
    case AddressConfiguration::Method::Forced:
        return "forced";
    case AddressConfiguration::Method::Persistent:
        return "persistent";
    case AddressConfiguration::Method::Dhcp:
        return "dhcp";
    case AddressConfiguration::Method::LinkLocal:
        return "link-local";
    case AddressConfiguration::Method::None:
        break;
    }
    return "none";
}

std::optional<Application> CameraDevice::controller() const
{
    return d->registers.privilege().controller();
}

CameraCounters CameraDevice::counters() const
{
    CameraCounters counters = d->counters;
    counters.conflicts = d->addresses.conflicts();
    return counters;
}

} // namespace emulated_camera
