#include "stand-ins/camera/CameraGvcp.h"

#include "gvcp/GVCPAckPacket.h"
#include "gvcp/GVCPActionCommandPacket.h"
#include "gvcp/GVCPCommandPacket.h"
#include "gvcp/GVCPMessageCode.h"
#include "packets/ByteArrayHelpers.h"
#include "stand-ins/camera/GvcpStatus.h"

#include <algorithm>

namespace emulated_camera {

using mesk::stack::Datagram;
using mesk::stack::NetAddress;
using mesk::stack::TimePoint;
namespace Code = GVCPMessageCode;

namespace {

constexpr quint8 allowBroadcastAck = 0x10; // flag of a discovery
constexpr quint8 scheduled = 0x80;         // flag of an action
constexpr quint32 discoveryBlockSizeBytes = 248;
constexpr quint16 actionEventId = 0x9003;

// Payload of force-IP (GigE Vision): 2 reserved bytes, the MAC address, then 12 reserved bytes ahead of each
// field.
constexpr int forceMacAt = 2, forceIpAt = forceMacAt + MacAddress::sizeBytes + 12,
              forceMaskAt = forceIpAt + 4 + 12, forceGatewayAt = forceMaskAt + 4 + 12,
              forceSizeBytes = forceGatewayAt + 4;
static_assert(forceSizeBytes == 56, "GigE Vision: payload of force-IP");

constexpr quint32 actionSizeBytes = 12, scheduledActionSizeBytes = actionSizeBytes + 8;

/// The bits of a mask in front of its first zero.
unsigned prefixBits(quint32 mask)
{
    unsigned bits = 0;
    for (; (mask & 0x80000000U) != 0; mask <<= 1U)
        ++bits;
    return bits;
}

/// False for what is no address of one node.
bool isOneNode(const NetAddress& address)
{
    constexpr quint32 loopback = 127, multicastFirst = 224;
    const quint32 first = address.address.toUInt32() >> 24;
    return first != 0 && first != loopback && first < multicastFirst && address.prefixBits != 0 &&
           address.address != address.broadcast();
}

} // namespace

CameraGvcp::CameraGvcp(const CameraParts& parts, std::chrono::milliseconds pendingAfter)
    : m_device(parts)
    , m_pendingAfter(pendingAfter)
{
}

void CameraGvcp::powerOn()
{
    m_recent.clear();
    m_pending.clear();
    m_forcer.reset();
}

void CameraGvcp::leaveAddress()
{
    m_recent.forgetAllBut(Code::ForceIpCommand);
    m_pending.clear();
}

void CameraGvcp::receive(const Datagram& datagram, TimePoint now)
{
    if (readField<quint8>(datagram.data, 0) != GVCPPacket::KeyByte) {
        receiveAcknowledge(datagram, now);
        return;
    }
    const GVCPCommandPacket command(datagram.data);
    if (!isForUs(command, datagram)) {
        ++m_device.counters.ignored;
        return;
    }
    ++m_device.counters.commands;
    const bool isDiscovery = command.command() == Code::DiscoveryCommand;
    const Asker asker{datagram.senderMac,
                      {datagram.sender, datagram.senderPort},
                      datagram.data,
                      isDiscovery || command.command() == Code::ForceIpCommand,
                      isDiscovery && command.hasFlag(allowBroadcastAck)};
    m_device.registers.hear(asker.who, now);
    if (isDiscovery)
        discover(command, asker);
    else if (!handleAgain(asker, now))
        handle(command, asker, now);
}

void CameraGvcp::configureAddress(TimePoint now)
{
    const CameraMemory& memory = m_device.memory;
    const quint32 enabled = memory.number(Register::IpConfiguration);
    AddressConfiguration::Choices choices;
    choices.dhcp = (enabled & ipDhcp) != 0;
    const NetAddress persistent{IpAddress(memory.number(Register::PersistentIp)),
                                prefixBits(memory.number(Register::PersistentMask))};
    if ((enabled & ipPersistent) != 0 && isOneNode(persistent)) {
        choices.persistent = persistent;
        choices.persistentGateway = IpAddress(memory.number(Register::PersistentGateway));
    }
    m_device.addresses.start(choices, now);
}

quint32 CameraGvcp::pendingTimeoutMs() const
{
    return m_pendingAfter.count() == 0 ? 0 : quint32((m_pendingAfter + pendingMargin).count());
}

void CameraGvcp::expire(TimePoint now)
{
    while (!m_pending.empty() && m_pending.front().due <= now) {
        const Pending pending = m_pending.front();
        m_pending.pop_front();
        m_recent.add(pending.asker.who, pending.asker.command, pending.answer, now);
        send(pending.asker, pending.answer);
    }
}

TimePoint CameraGvcp::nextDeadline() const
{
    return m_pending.empty() ? mesk::stack::never : m_pending.front().due;
}

// Those of the message channel alone: this device sends no other commands.
void CameraGvcp::receiveAcknowledge(const Datagram& datagram, TimePoint now)
{
    const GVCPAckPacket ack(datagram.data);
    if (!ack.isValid() || (ack.acknowledge() != Code::EventAck && ack.acknowledge() != Code::EventDataAck)) {
        ++m_device.counters.ignored;
        return;
    }
    m_device.messages.acknowledge({datagram.sender, datagram.senderPort}, ack.acknowledge(), ack.requestId(),
                                  now);
}

bool CameraGvcp::isForUs(const GVCPCommandPacket& command, const Datagram& datagram) const
{
    const quint16 code = command.command();
    if (!command.isValid() || code % 2 != 0) // the odd ones are acknowledges
        return false;
    if (code == Code::DiscoveryCommand)
        return true;
    if (code == Code::ForceIpCommand)
        return readMacAddress(command.payload(), forceMacAt) == m_device.node.mac();
    const NetAddress& own = m_device.node.address();
    const bool isAnswerable = own.isThere() && datagram.sender != IpAddress();
    return isAnswerable && (datagram.destination == own.address || code == Code::ActionCommand);
}

void CameraGvcp::handle(const GVCPCommandPacket& command, const Asker& asker, TimePoint now)
{
    m_recent.add(asker.who, asker.command, {}, now);
    switch (command.command()) {
    case Code::ForceIpCommand:
        forceIp(command, asker, now);
        break;
    case Code::ReadRegisterCommand:
    case Code::WriteRegisterCommand:
    case Code::ReadMemoryCommand:
    case Code::WriteMemoryCommand:
        access(command, asker, now);
        break;
    case Code::ActionCommand:
        act(command, asker, now);
        break;
    case Code::PacketResendCommand:
        ++m_device.counters.resends;
        break;
    default:
        answer(command, asker, {GvcpStatus::NotImplemented}, now);
        break;
    }
}

bool CameraGvcp::handleAgain(const Asker& asker, TimePoint now)
{
    const auto pending = std::find_if(m_pending.begin(), m_pending.end(),
                                      [&asker](const Pending& each) { return each.asker.isSame(asker); });
    const RecentCommands::Entry* const before = m_recent.find(asker.who, asker.command, now);
    const bool isForcing = m_forcer && m_forcer->isSame(asker);
    if (pending == m_pending.end() && before == nullptr && !isForcing)
        return false;
    ++m_device.counters.retransmissions;
    if (pending != m_pending.end())
        sendPending(*pending, now);
    else if (before != nullptr && !before->answer.isEmpty())
        send(asker, before->answer);
    return true;
}

// The block is the beginning of the memory.
void CameraGvcp::discover(const GVCPCommandPacket& command, const Asker& asker)
{
    if (!command.hasFlag(GVCPPacket::AckRequired))
        return;
    QByteArray block;
    m_device.memory.read(0, discoveryBlockSizeBytes, block);
    const GVCPAckPacket ack(GvcpStatus::Success, command, block, NetworkOrder);
    ++m_device.counters.acknowledges[ack.status()];
    send(asker, ack.serialize());
}

void CameraGvcp::forceIp(const GVCPCommandPacket& command, const Asker& asker, TimePoint now)
{
    const QByteArray payload = command.payload();
    if (payload.size() != forceSizeBytes) {
        answer(command, asker, {GvcpStatus::InvalidParameter}, now);
        return;
    }
    if (m_device.registers.privilege().controller()) {
        answer(command, asker, {GvcpStatus::AccessDenied}, now);
        return;
    }
    if (m_device.addresses.isForcing()) {
        answer(command, asker, {GvcpStatus::Busy}, now);
        return;
    }
    const NetAddress address{IpAddress(readField<quint32>(payload, forceIpAt)),
                             prefixBits(readField<quint32>(payload, forceMaskAt))};
    if (!address.isThere()) {
        // Answered first, as long as there is an address to answer from.
        answer(command, asker, {GvcpStatus::Success}, now);
        configureAddress(now);
    } else if (!isOneNode(address)) {
        answer(command, asker, {GvcpStatus::InvalidParameter}, now);
    } else {
        const auto answerThen = [this, asker](bool taken, TimePoint then) {
            m_forcer.reset();
            const quint16 status = taken ? GvcpStatus::Success : GvcpStatus::Error;
            answer(GVCPCommandPacket(asker.command), asker, {status}, then);
        };
        m_forcer = asker;
        m_device.addresses.force(address, IpAddress(readField<quint32>(payload, forceGatewayAt)), answerThen,
                                 now);
    }
}

void CameraGvcp::access(const GVCPCommandPacket& command, const Asker& asker, TimePoint now)
{
    if (m_pending.size() >= pendingMax) {
        answer(command, asker, {GvcpStatus::Busy}, now);
        return;
    }
    RegisterAccess& registers = m_device.registers;
    const QByteArray& bytes = asker.command;
    switch (command.command()) {
    case Code::ReadRegisterCommand:
        answerLater(command, asker, registers.read(GVCPRegisterReadCommandPacket(bytes), asker.who), now);
        break;
    case Code::WriteRegisterCommand:
        answerLater(command, asker, registers.write(GVCPRegisterWriteCommandPacket(bytes), asker.who, now),
                    now);
        break;
    case Code::ReadMemoryCommand:
        answerLater(command, asker, registers.read(GVCPMemoryReadCommandPacket(bytes), asker.who), now);
        break;
    default:
        answerLater(command, asker, registers.write(GVCPMemoryWriteCommandPacket(bytes), asker.who, now),
                    now);
        break;
    }
}

// A broadcast that doesn't concern this device is no error.
void CameraGvcp::act(const GVCPCommandPacket& command, const Asker& asker, TimePoint now)
{
    const bool isScheduled = command.hasFlag(scheduled);
    if (command.payloadSize() != (isScheduled ? scheduledActionSizeBytes : actionSizeBytes)) {
        answer(command, asker, {GvcpStatus::InvalidParameter}, now);
        return;
    }
    const GVCPActionCommandPacket action(asker.command);
    if (action.deviceKey() != m_device.memory.number(Register::ActionDeviceKey))
        return;
    if (isScheduled)
        answer(command, asker, {GvcpStatus::NoReferenceTime}, now);
    else if (trigger(action.groupKey(), action.groupMask(), now) != 0)
        answer(command, asker, {GvcpStatus::Success}, now);
}

/// @returns how many action signals have the key and a bit of the mask.
quint32 CameraGvcp::trigger(quint32 groupKey, quint32 groupMask, TimePoint now)
{
    CameraMemory& memory = m_device.memory;
    quint32 triggered = 0;
    for (quint32 i = 0; i < actionSignalsMax; ++i) {
        const quint32 at = i * actionStrideBytes;
        if (memory.number(Register::ActionGroupKey + at) != groupKey ||
            (memory.number(Register::ActionGroupMask + at) & groupMask) == 0)
            continue;
        ++triggered;
        ++m_device.counters.actions;
        const quint32 count = memory.number(Register::ActionCount) + 1;
        memory.setNumber(Register::ActionCount, count);
        const QByteArray signal = byteArrayFromUInt32(qToBigEndian(i));
        m_device.messages.post({actionEventId, count, signal}, m_device.clock.ticks(now), now);
    }
    return triggered;
}

void CameraGvcp::answer(const GVCPCommandPacket& command, const Asker& asker, const Answer& answer,
                        TimePoint now)
{
    QByteArray bytes;
    if (command.hasFlag(GVCPPacket::AckRequired)) {
        bytes = GVCPAckPacket(answer.status, command, answer.payload, NetworkOrder).serialize();
        ++m_device.counters.acknowledges[answer.status];
    }
    m_recent.add(asker.who, asker.command, bytes, now);
    if (!bytes.isEmpty())
        send(asker, bytes);
}

void CameraGvcp::answerLater(const GVCPCommandPacket& command, const Asker& asker, const Answer& later,
                             TimePoint now)
{
    if (m_pendingAfter.count() == 0 || !command.hasFlag(GVCPPacket::AckRequired)) {
        answer(command, asker, later, now);
        return;
    }
    ++m_device.counters.acknowledges[later.status];
    const GVCPAckPacket ack(later.status, command, later.payload, NetworkOrder);
    m_pending.push_back({now + m_pendingAfter, asker, ack.serialize(), command.requestId()});
    sendPending(m_pending.back(), now);
}

void CameraGvcp::sendPending(const Pending& pending, TimePoint now)
{
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(pending.due - now) + pendingMargin;
    // 2 reserved bytes, and the time in milliseconds.
    const GVCPAckPacket ack(GvcpStatus::Success, Code::PendingAck, pending.id,
                            byteArrayFromUInt32(qToBigEndian(quint32(left.count()))), NetworkOrder);
    ++m_device.counters.pending;
    send(pending.asker, ack.serialize());
}

// To the MAC address that the command came from, so that no answer waits for address resolution.
void CameraGvcp::send(const Asker& to, const QByteArray& acknowledge)
{
    const NetAddress& own = m_device.node.address();
    const bool isReachable = own.isThere() && (!to.isMaybeUnreachable || own.contains(to.who.address));
    const bool isBroadcast = to.asksForBroadcast || !isReachable;
    m_device.node.sendUdpFrame(isBroadcast ? MacAddress::broadcast() : to.mac, own.address,
                               isBroadcast ? IpAddress::broadcast() : to.who.address, GVCPPacket::Port,
                               to.who.port, m_device.wire.spoil(acknowledge));
}

} // namespace emulated_camera
