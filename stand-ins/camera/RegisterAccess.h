#pragma once

#include "gvcp/GVCPMemoryReadCommandPacket.h"
#include "gvcp/GVCPMemoryWriteCommandPacket.h"
#include "gvcp/GVCPRegisterReadCommandPacket.h"
#include "gvcp/GVCPRegisterWriteCommandPacket.h"
#include "stand-ins/camera/CameraMemory.h"
#include "stand-ins/camera/ControlPrivilege.h"
#include "stand-ins/camera/DeviceClock.h"
#include "stand-ins/camera/MessageChannel.h"

namespace emulated_camera {

/// What a command is answered with.
struct Answer {
    quint16 status = 0;
    QByteArray payload{};
};

/// The four commands that read and write, under the control privilege, with what a write sets going.
/// [one thread at a time]
class RegisterAccess {
public:
    /// Largest payload of a command or an acknowledge of registers, and largest data of one of memory, whose
    /// address takes a word. A packet with its headers has 576 bytes (GigE Vision).
    static constexpr int registersSizeMaxBytes = 540, dataSizeMaxBytes = 536;

    RegisterAccess(CameraMemory& memory, MessageChannel& messages, DeviceClock& clock,
                   CameraCounters& counters);

    /// Nobody controls the device.
    void powerOn();

    /// The values up to the first register that fails, whose status it is.
    Answer read(const GVCPRegisterReadCommandPacket& command, const Application& who) const;
    /// Stops at the first register that fails; the answer tells how many were written.
    Answer write(const GVCPRegisterWriteCommandPacket& command, const Application& who,
                 mesk::stack::TimePoint now);
    Answer read(const GVCPMemoryReadCommandPacket& command, const Application& who) const;
    /// Writes all or nothing; the answer tells how many bytes were written.
    Answer write(const GVCPMemoryWriteCommandPacket& command, const Application& who,
                 mesk::stack::TimePoint now);

    const ControlPrivilege& privilege() const;
    /// A valid command came: that of the controller keeps the privilege alive.
    void hear(const Application& who, mesk::stack::TimePoint now);
    /// Takes the privilege from who controls the device, and closes what was opened under it.
    void releasePrivilege();

    void expire(mesk::stack::TimePoint now);
    mesk::stack::TimePoint nextDeadline() const;

private:
    quint16 checkWord(quint32 address, quint32 value, const Application& who) const;
    quint16 writeWord(quint32 address, quint32 value, const Application& who, mesk::stack::TimePoint now);
    void takeEffect(quint32 address, quint32 value, mesk::stack::TimePoint now);
    void controlTimestamp(quint32 bits, mesk::stack::TimePoint now);
    void sendTestEvent(quint32 value, mesk::stack::TimePoint now);
    void publishPrivilege();
    void closeChannels();

    CameraMemory& m_memory;
    MessageChannel& m_messages;
    DeviceClock& m_clock;
    CameraCounters& m_counters;
    ControlPrivilege m_privilege;
    quint64 m_testEvents = 0;
};

} // namespace emulated_camera
