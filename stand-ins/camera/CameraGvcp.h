#pragma once

#include "stack/NetworkNode.h"
#include "stand-ins/camera/AddressConfiguration.h"
#include "stand-ins/camera/FaultyWire.h"
#include "stand-ins/camera/RecentCommands.h"
#include "stand-ins/camera/RegisterAccess.h"

#include <deque>

class GVCPCommandPacket;

namespace emulated_camera {

/// What GVCP needs of the rest of the device.
struct CameraParts {
    mesk::stack::NetworkNode& node;
    CameraMemory& memory;
    RegisterAccess& registers;
    MessageChannel& messages;
    AddressConfiguration& addresses;
    DeviceClock& clock;
    FaultyWire& wire;
    CameraCounters& counters;
};

/// The commands of GVCP as they come from the wire: what is one for this device, which one came already, how
/// and when it is answered. [one thread at a time]
class CameraGvcp {
public:
    static constexpr std::size_t pendingMax = 16; ///< answers under way; with more the device is busy
    /// What a pending acknowledge tells beyond the time that the answer takes: clients ask again to the
    /// millisecond.
    static constexpr std::chrono::milliseconds pendingMargin{100};

    /// @param pendingAfter how long reads and writes take; with 0 none has a pending acknowledge.
    CameraGvcp(const CameraParts& parts, std::chrono::milliseconds pendingAfter);

    void powerOn();
    /// A datagram to the port of GVCP.
    void receive(const mesk::stack::Datagram& datagram, mesk::stack::TimePoint now);
    /// Begins anew with the address, by what the registers say.
    void configureAddress(mesk::stack::TimePoint now);

    /// Forgets the answers under way and what was answered: nobody repeats a command at another address. Not
    /// that of a force-IP, which doesn't come to the address.
    void leaveAddress();

    /// What a read or a write takes at most, 0 if it takes no time.
    quint32 pendingTimeoutMs() const;

    void expire(mesk::stack::TimePoint now);
    mesk::stack::TimePoint nextDeadline() const;

private:
    /// Who is answered, and the command by which it is remembered.
    struct Asker {
        MacAddress mac;
        Application who;
        QByteArray command;
        bool isMaybeUnreachable; ///< asks by discovery or force-IP, which also work without an address
        bool asksForBroadcast;

        bool isSame(const Asker& other) const { return who == other.who && command == other.command; }
    };
    struct Pending {
        mesk::stack::TimePoint due;
        Asker asker;
        QByteArray answer;
        quint16 id;
    };

    void receiveAcknowledge(const mesk::stack::Datagram& datagram, mesk::stack::TimePoint now);
    bool isForUs(const GVCPCommandPacket& command, const mesk::stack::Datagram& datagram) const;
    void handle(const GVCPCommandPacket& command, const Asker& asker, mesk::stack::TimePoint now);
    bool handleAgain(const Asker& asker, mesk::stack::TimePoint now);
    void discover(const GVCPCommandPacket& command, const Asker& asker);
    void forceIp(const GVCPCommandPacket& command, const Asker& asker, mesk::stack::TimePoint now);
    void access(const GVCPCommandPacket& command, const Asker& asker, mesk::stack::TimePoint now);
    void act(const GVCPCommandPacket& command, const Asker& asker, mesk::stack::TimePoint now);
    quint32 trigger(quint32 groupKey, quint32 groupMask, mesk::stack::TimePoint now);

    void answer(const GVCPCommandPacket& command, const Asker& asker, const Answer& answer,
                mesk::stack::TimePoint now);
    void answerLater(const GVCPCommandPacket& command, const Asker& asker, const Answer& answer,
                     mesk::stack::TimePoint now);
    void sendPending(const Pending& pending, mesk::stack::TimePoint now);
    void send(const Asker& to, const QByteArray& acknowledge);

    CameraParts m_device;
    std::chrono::milliseconds m_pendingAfter;
    RecentCommands m_recent;
    std::deque<Pending> m_pending; ///< in the order in which they are due
    std::optional<Asker> m_forcer; ///< of an address that is still probed
};

} // namespace emulated_camera
