#pragma once

#include "host/net/Loop.h"
#include "stack/NetworkNode.h"

#include <memory>
#include <vector>

class GVCPCommandPacket;

namespace mesk::host {

/// A device has answered a command with an error status.
class GvcpRefusal : public Failure {
public:
    /// @param what the command, as "read register 0x00000a00".
    GvcpRefusal(const std::string& what, quint16 status);
    quint16 status() const { return m_status; }

private:
    quint16 m_status;
};

/// One device, asked over the GigE Vision Control Protocol: a command at a time, sent again with the same
/// request id until its acknowledge comes. An acknowledge counts if it comes from the device's address and
/// port with the id and the code of the command. A pending acknowledge prolongs the wait.
///
/// While control is held, commands of no other use keep it: in every wait of the client's own, and wherever
/// keepControl() is called. What is looked at is whether anybody has control: that another client took it
/// after it was lost shows at the next command, which is denied.
///
/// Operations throw Failure if the device doesn't answer or answers something else, GvcpRefusal for an error
/// status, Interruption for Ctrl-C. [one thread at a time]
class GvcpClient {
public:
    struct Timing {
        stack::Duration answer = std::chrono::milliseconds(400); ///< wait behind each try
        unsigned tries = 4;
        stack::Duration pendingMax = std::chrono::seconds(120); ///< for all pending acknowledges of a command
    };
    /// Told while memory is read or written.
    using Progressed = std::function<void(quint32 bytesDone)>;

    /// UDP port of this side. Always the same, so that a run that died in control can be followed by another.
    static constexpr quint16 localPort = 52956;
    static constexpr quint32 dataSizeMaxBytes = 536; ///< of one memory message
    static constexpr quint32 wordSizeBytes = 4;      ///< memory is read and written in whole words
    static constexpr std::size_t registersMax = 135; ///< of one command

    /// @param node, loop must outlive the client; the loop is the one that the node lives in.
    GvcpClient(stack::NetworkNode& node, Loop& loop, const IpAddress& device, const Timing& timing);
    ~GvcpClient();
    GvcpClient(const GvcpClient&) = delete;
    GvcpClient& operator=(const GvcpClient&) = delete;

    const IpAddress& device() const;

    quint32 readRegister(quint32 address);
    /// As many at once as a command holds. A device that answers with another count of values than it was
    /// asked for, or refuses several at once, is asked again for each.
    std::vector<quint32> readRegisters(const std::vector<quint32>& addresses);
    void writeRegister(quint32 address, quint32 value);
    /// @param count any; the device is asked for whole words.
    QByteArray readMemory(quint32 address, quint32 count, const Progressed& progressed = {});
    /// @param data whole words.
    void writeMemory(quint32 address, const QByteArray& data, const Progressed& progressed = {});

    /// Takes the control privilege. See ControlPrivilege for how it is given back.
    void takeControl();
    bool inControl() const;
    /// Gives it back, also after Ctrl-C; waits some tenths of a second for an answer.
    void giveControlBack() noexcept;
    /// Sends what keeps the control, if it is due.
    void keepControl(stack::TimePoint now);
    /// Waits with keepControl(). @returns, @throws as Loop::await().
    bool await(stack::TimePoint deadline, const Loop::Turn& turn);

private:
    struct D;
    std::unique_ptr<D> d;
};

/// Control of a device for as long as the object lives.
class ControlPrivilege {
public:
    explicit ControlPrivilege(GvcpClient& client);
    ~ControlPrivilege();
    ControlPrivilege(const ControlPrivilege&) = delete;
    ControlPrivilege& operator=(const ControlPrivilege&) = delete;

private:
    GvcpClient& m_client;
};

} // namespace mesk::host
