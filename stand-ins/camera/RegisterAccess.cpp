#include "stand-ins/camera/RegisterAccess.h"

#include "packets/ByteArrayHelpers.h"
#include "stand-ins/camera/GvcpStatus.h"

namespace emulated_camera {

using mesk::stack::TimePoint;

namespace {

constexpr int pairSizeBytes = 2 * int(wordSizeBytes);

/// A reserved half and how many registers or bytes were written.
QByteArray writtenCount(int count)
{
    return byteArrayFromUInt32(qToBigEndian(quint32(count)));
}

/// Whether a payload is a run of as many items as a command may have.
bool isRun(quint32 payloadSize, int itemSizeBytes, int sizeMaxBytes)
{
    return payloadSize > 0 && payloadSize <= quint32(sizeMaxBytes) &&
           payloadSize % quint32(itemSizeBytes) == 0;
}

} // namespace

RegisterAccess::RegisterAccess(CameraMemory& memory, MessageChannel& messages, DeviceClock& clock,
                               CameraCounters& counters)
    : m_memory(memory)
    , m_messages(messages)
    , m_clock(clock)
    , m_counters(counters)
{
}

void RegisterAccess::powerOn()
{
    m_testEvents = 0;
    releasePrivilege();
}

Answer RegisterAccess::read(const GVCPRegisterReadCommandPacket& command, const Application& who) const
{
    if (!isRun(command.payloadSize(), wordSizeBytes, registersSizeMaxBytes))
        return {GvcpStatus::InvalidParameter};
    Answer answer;
    for (quint32 i = 0; i < command.addressCount() && answer.status == GvcpStatus::Success; ++i) {
        QByteArray word;
        const bool isOpenToAll = command.address(i) == Register::ControlPrivilege;
        answer.status = isOpenToAll || m_privilege.mayRead(who)
                            ? m_memory.read(command.address(i), wordSizeBytes, word)
                            : quint16(GvcpStatus::AccessDenied);
        answer.payload += word;
    }
    return answer;
}

Answer RegisterAccess::write(const GVCPRegisterWriteCommandPacket& command, const Application& who,
                             TimePoint now)
{
    if (!isRun(command.payloadSize(), pairSizeBytes, registersSizeMaxBytes))
        return {GvcpStatus::InvalidParameter, writtenCount(0)};
    for (quint32 i = 0; i < command.registerCount(); ++i)
        if (const quint16 status = writeWord(command.address(i), command.value(i), who, now))
            return {status, writtenCount(int(i))};
    return {GvcpStatus::Success, writtenCount(command.registerCount())};
}

Answer RegisterAccess::read(const GVCPMemoryReadCommandPacket& command, const Application& who) const
{
    if (command.payloadSize() != pairSizeBytes || command.count() == 0 || command.count() > dataSizeMaxBytes)
        return {GvcpStatus::InvalidParameter};
    if (!m_privilege.mayRead(who))
        return {GvcpStatus::AccessDenied};
    QByteArray data;
    if (const quint16 status = m_memory.read(command.address(), command.count(), data))
        return {status};
    return {GvcpStatus::Success, command.payload().left(wordSizeBytes) + data};
}

Answer RegisterAccess::write(const GVCPMemoryWriteCommandPacket& command, const Application& who,
                             TimePoint now)
{
    const QByteArray data = command.data();
    if (!isRun(quint32(data.size()), wordSizeBytes, dataSizeMaxBytes))
        return {GvcpStatus::InvalidParameter, writtenCount(0)};
    // Only the first address can be so large that it wraps, and then the check refuses it.
    for (int at = 0; at < data.size(); at += int(wordSizeBytes))
        if (const quint16 status =
                checkWord(command.address() + quint32(at), readField<quint32>(data, at), who))
            return {status, writtenCount(0)};
    for (int at = 0; at < data.size(); at += int(wordSizeBytes))
        if (const quint16 status =
                writeWord(command.address() + quint32(at), readField<quint32>(data, at), who, now))
            return {status, writtenCount(at)};
    return {GvcpStatus::Success, writtenCount(data.size())};
}

const ControlPrivilege& RegisterAccess::privilege() const
{
    return m_privilege;
}

void RegisterAccess::hear(const Application& who, TimePoint now)
{
    if (m_privilege.isController(who))
        m_privilege.refresh(now);
}

void RegisterAccess::releasePrivilege()
{
    m_privilege.release();
    publishPrivilege();
}

void RegisterAccess::expire(TimePoint now)
{
    if (nextDeadline() > now)
        return;
    ++m_counters.heartbeatsLost;
    releasePrivilege();
}

TimePoint RegisterAccess::nextDeadline() const
{
    if (!m_privilege.controller() || (m_memory.number(Register::GvcpConfiguration) & heartbeatDisabled) != 0)
        return mesk::stack::never;
    return m_privilege.lastHeard() + std::chrono::milliseconds(m_memory.number(Register::HeartbeatTimeout));
}

quint16 RegisterAccess::checkWord(quint32 address, quint32 value, const Application& who) const
{
    if (address != Register::ControlPrivilege && !m_privilege.isController(who))
        return GvcpStatus::AccessDenied;
    return m_memory.checkWrite(address, value);
}

quint16 RegisterAccess::writeWord(quint32 address, quint32 value, const Application& who, TimePoint now)
{
    quint16 status = checkWord(address, value, who);
    if (status != GvcpStatus::Success)
        return status;
    if (address == Register::ControlPrivilege) {
        status = m_privilege.request(value, who, now);
        publishPrivilege();
        return status;
    }
    m_memory.setNumber(address, value);
    takeEffect(address, value, now);
    return GvcpStatus::Success;
}

void RegisterAccess::takeEffect(quint32 address, quint32 value, TimePoint now)
{
    switch (address) {
    case Register::AcquisitionStart:
    case Register::AcquisitionStop:
        m_memory.setNumber(Register::AcquisitionStatus, address == Register::AcquisitionStart ? 1 : 0);
        break;
    case Register::TimestampControl:
        controlTimestamp(value, now);
        break;
    case Register::TestEvent:
        sendTestEvent(value, now);
        break;
    case Register::IpConfiguration: // a link-local address is always the last choice
        m_memory.setNumber(address, (value & (ipPersistent | ipDhcp)) | ipLinkLocal);
        break;
    case Register::MessagePort:
    case Register::MessageDestination:
        if (!m_messages.isOpen())
            m_messages.close();
        break;
    default:
        break;
    }
}

void RegisterAccess::controlTimestamp(quint32 bits, TimePoint now)
{
    if ((bits & timestampLatch) != 0) {
        const quint64 ticks = m_clock.ticks(now);
        m_memory.setNumber(Register::TimestampHigh, quint32(ticks >> 32));
        m_memory.setNumber(Register::TimestampLow, quint32(ticks));
    }
    if ((bits & timestampReset) != 0)
        m_clock.reset(now);
}

// The data of a test event are the user block's first words, so that a client can choose them.
void RegisterAccess::sendTestEvent(quint32 value, TimePoint now)
{
    MessageChannel::Event event{quint16(value), ++m_testEvents};
    if ((value & testEventWithData) != 0) {
        QByteArray data;
        m_memory.read(Register::UserBlock, testEventDataSizeBytes, data);
        event.data = data;
    }
    m_messages.post(event, m_clock.ticks(now), now);
}

void RegisterAccess::publishPrivilege()
{
    const Application controller = m_privilege.controller().value_or(Application());
    m_memory.setNumber(Register::ControlPrivilege, m_privilege.value());
    m_memory.setNumber(Register::PrimaryPort, controller.port);
    m_memory.setNumber(Register::PrimaryIp, controller.address.toUInt32());
    if (!m_privilege.controller())
        closeChannels();
}

void RegisterAccess::closeChannels()
{
    for (const quint32 address : {Register::MessagePort, Register::MessageDestination, Register::StreamPort,
                                  Register::StreamDestination, Register::AcquisitionStatus})
        m_memory.setNumber(address, 0);
    m_messages.close();
}

} // namespace emulated_camera
