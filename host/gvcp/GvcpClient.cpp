#include "host/gvcp/GvcpClient.h"

#include "gvcp/GVCPAckPacket.h"
#include "gvcp/GVCPMemoryReadCommandPacket.h"
#include "gvcp/GVCPMemoryWriteCommandPacket.h"
#include "gvcp/GVCPMessageCode.h"
#include "gvcp/GVCPRegisterReadCommandPacket.h"
#include "gvcp/GVCPRegisterWriteCommandPacket.h"
#include "host/gvcp/BootstrapRegister.h"
#include "host/gvcp/GvcpStatus.h"
#include "host/gvcp/RequestIds.h"
#include "host/net/PortBinding.h"
#include "packets/ByteArrayHelpers.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

namespace mesk::host {

using stack::TimePoint;

namespace {

constexpr int wordBytes = static_cast<int>(GvcpClient::wordSizeBytes);
constexpr int pendingTimeAt = 2; // ms, behind two reserved bytes
constexpr auto heartbeatDefault = std::chrono::milliseconds(3000);
constexpr auto heartbeatMin = std::chrono::milliseconds(500); // what the standard lets a device ask for
constexpr int beatsPerTimeout = 3;
constexpr auto giveBackAnswer = std::chrono::milliseconds(200);
constexpr unsigned giveBackTries = 2;

std::string registerText(quint32 address)
{
    return fmt::format("register 0x{:08x}", address);
}

std::string memoryText(quint32 address, quint32 count)
{
    return fmt::format("{} bytes of memory at 0x{:08x}", count, address);
}

/// The command under way.
struct Exchange {
    quint16 id = 0;
    quint16 ackCode = 0;
    TimePoint answerBy; ///< then the command is sent again
    TimePoint giveUpAt; ///< pending acknowledges reach no further
    bool answered = false;
    quint16 status = 0;
    QByteArray payload;
};

/// While this side has the control privilege.
struct Control {
    TimePoint nextBeat = stack::never; ///< until the device has granted it
    stack::Duration beatPause = heartbeatDefault / beatsPerTimeout;
    quint16 beatId = 0; ///< 0: none is under way
};

} // namespace

GvcpRefusal::GvcpRefusal(const std::string& what, quint16 status)
    : Failure(ExitCode::Nothing, fmt::format("{}: {}", what, gvcpStatusText(status)))
    , m_status(status)
{
}

struct GvcpClient::D {
    D(stack::NetworkNode& ownNode, Loop& ownLoop, const IpAddress& asked, const Timing& times)
        : node(ownNode)
        , loop(ownLoop)
        , device(asked)
        , timing(times)
        , binding(node, localPort,
                  [this](const stack::Datagram& datagram, TimePoint now) { receive(datagram, now); })
    {
    }

    void receive(const stack::Datagram& datagram, TimePoint now);
    void receivePending(const QByteArray& payload, TimePoint now);
    void receiveBeat(const GVCPAckPacket& ack);
    void send(const QByteArray& command, TimePoint now);
    QByteArray ask(const GVCPCommandPacket& command, const std::string& what);
    bool askOnce(const QByteArray& command);
    std::vector<quint32> readRegisters(const std::vector<quint32>& addresses);
    std::vector<quint32> readAtOnce(const std::vector<quint32>& addresses);
    void keepControl(TimePoint now);

    stack::NetworkNode& node;
    Loop& loop;
    const IpAddress device;
    Timing timing;
    Loop::Interrupts interrupts = Loop::Interrupts::EndTheWait;
    RequestIds ids;
    std::optional<Exchange> exchange;
    std::optional<Control> control;
    bool controlLost = false;
    const PortBinding binding;
};

void GvcpClient::D::receive(const stack::Datagram& datagram, TimePoint now)
{
    if (datagram.sender != device || datagram.senderPort != GVCPPacket::Port) {
        return;
    }
    const GVCPAckPacket ack(datagram.data);
    if (!ack.isValid()) {
        return;
    }
    const quint16 id = ack.requestId();
    if (exchange && !exchange->answered && id == exchange->id) {
        if (ack.acknowledge() == GVCPMessageCode::PendingAck) {
            receivePending(ack.payload(), now);
        } else if (ack.acknowledge() == exchange->ackCode) {
            exchange->answered = true;
            exchange->status = ack.status();
            exchange->payload = ack.payload();
        }
    } else if (control && id != 0 && id == control->beatId) {
        receiveBeat(ack);
    }
}

void GvcpClient::D::receivePending(const QByteArray& payload, TimePoint now)
{
    const std::chrono::milliseconds announced(readField<quint16>(payload, pendingTimeAt));
    const TimePoint answerBy = now + announced + timing.answer;
    exchange->answerBy = std::min(std::max(exchange->answerBy, answerBy), exchange->giveUpAt);
}

void GvcpClient::D::receiveBeat(const GVCPAckPacket& ack)
{
    control->beatId = 0;
    const bool told = ack.acknowledge() == GVCPMessageCode::ReadRegisterAck &&
                      ack.status() == GvcpStatus::Success && ack.payloadSize() == GvcpClient::wordSizeBytes;
    if (told && (readField<quint32>(ack.payload(), 0) & (controlAccess | exclusiveAccess)) == 0) {
        control.reset();
        controlLost = true;
    }
}

void GvcpClient::D::send(const QByteArray& command, TimePoint now)
{
    node.sendUdp(device, GVCPPacket::Port, localPort, command, now);
    if (control && control->nextBeat != stack::never) {
        control->nextBeat = now + control->beatPause; // any command shows the device that somebody is there
    }
}

void GvcpClient::D::keepControl(TimePoint now)
{
    if (!control || now < control->nextBeat) {
        return;
    }
    control->beatId = ids.next();
    send(
        GVCPRegisterReadCommandPacket(control->beatId, BootstrapRegister::ControlPrivilege, true).serialize(),
        now);
}

/// Sends a command and waits behind it. @returns whether the answer is there.
bool GvcpClient::D::askOnce(const QByteArray& command)
{
    const TimePoint start = loop.now();
    exchange->answerBy = start + timing.answer;
    send(command, start);
    const auto end = loop.runUntil(stack::never, interrupts, [this](TimePoint now) {
        keepControl(now);
        return exchange->answered || now >= exchange->answerBy;
    });
    if (end == Loop::End::Interrupted) {
        throw Interruption();
    }
    return exchange->answered;
}

/// @returns the payload of the acknowledge.
QByteArray GvcpClient::D::ask(const GVCPCommandPacket& command, const std::string& what)
{
    if (controlLost) {
        throw Failure(ExitCode::Nothing, fmt::format("{}: the device has ended this side's control", what));
    }
    exchange.emplace();
    exchange->id = command.requestId();
    exchange->ackCode = static_cast<quint16>(command.command() + 1);
    exchange->giveUpAt = loop.now() + timing.pendingMax;
    const QByteArray bytes = command.serialize();
    bool answered = false;
    for (unsigned tries = 0; tries < timing.tries && !answered; ++tries) {
        answered = askOnce(bytes);
    }
    const Exchange ended = *exchange;
    exchange.reset();
    if (!answered) {
        throw Failure(ExitCode::Nothing, fmt::format("{}: {} does not answer", what, device.toStdString()));
    }
    if (ended.status != GvcpStatus::Success) {
        throw GvcpRefusal(what, ended.status);
    }
    return ended.payload;
}

/// @returns what the device answers, which may be another count of values.
std::vector<quint32> GvcpClient::D::readRegisters(const std::vector<quint32>& addresses)
{
    QByteArray payload;
    for (const quint32 address : addresses) {
        payload += byteArrayFromUInt32(address);
    }
    GVCPRegisterReadCommandPacket command(ids.next(), 0, true);
    command.setPayload(payload, HostOrder);
    const QByteArray answer = ask(command, "read " + registerText(addresses.front()));
    std::vector<quint32> values;
    for (int at = 0; at + wordBytes <= answer.size(); at += wordBytes) {
        values.push_back(readField<quint32>(answer, at));
    }
    return values;
}

/// @returns no values where the device refuses any of several, so that it can be asked which.
std::vector<quint32> GvcpClient::D::readAtOnce(const std::vector<quint32>& addresses)
{
    try {
        return readRegisters(addresses);
    } catch (const GvcpRefusal&) {
        if (addresses.size() == 1) {
            throw;
        }
        return {};
    }
}

GvcpClient::GvcpClient(stack::NetworkNode& node, Loop& loop, const IpAddress& device, const Timing& timing)
    : d(std::make_unique<D>(node, loop, device, timing))
{
}

GvcpClient::~GvcpClient() = default;

const IpAddress& GvcpClient::device() const
{
    return d->device;
}

quint32 GvcpClient::readRegister(quint32 address)
{
    const std::vector<quint32> values = d->readRegisters({address});
    if (values.size() != 1) {
        throw Failure(ExitCode::Nothing, fmt::format("read {}: the device answers with {} values",
                                                     registerText(address), values.size()));
    }
    return values.front();
}

std::vector<quint32> GvcpClient::readRegisters(const std::vector<quint32>& addresses)
{
    std::vector<quint32> all;
    for (auto from = addresses.begin(); from != addresses.end();) {
        const auto left = static_cast<std::size_t>(addresses.end() - from);
        const std::size_t count = std::min(left, registersMax);
        const auto to = from + static_cast<std::ptrdiff_t>(count);
        std::vector<quint32> values = d->readAtOnce({from, to});
        if (values.size() != count) {
            values.clear();
            std::transform(from, to, std::back_inserter(values),
                           [this](quint32 address) { return readRegister(address); });
        }
        all.insert(all.end(), values.begin(), values.end());
        from = to;
    }
    return all;
}

void GvcpClient::writeRegister(quint32 address, quint32 value)
{
    GVCPRegisterWriteCommandPacket command(d->ids.next(), address, value, HostOrder);
    command.setFlags(GVCPPacket::AckRequired);
    d->ask(command, "write " + registerText(address));
}

QByteArray GvcpClient::readMemory(quint32 address, quint32 count, const Progressed& progressed)
{
    QByteArray data;
    while (static_cast<quint32>(data.size()) < count) {
        const auto done = static_cast<quint32>(data.size());
        const quint32 words = (count - done + wordSizeBytes - 1) / wordSizeBytes;
        const quint32 size = std::min(words * wordSizeBytes, dataSizeMaxBytes);
        const std::string what = "read " + memoryText(address + done, size);
        const QByteArray answer = d->ask(
            GVCPMemoryReadCommandPacket(d->ids.next(), address + done, static_cast<quint16>(size), true),
            what);
        if (answer.size() != wordBytes + static_cast<int>(size) ||
            readField<quint32>(answer, 0) != address + done) {
            throw Failure(ExitCode::Nothing,
                          fmt::format("{}: the device answers with {} bytes of 0x{:08x}", what,
                                      std::max(answer.size() - wordBytes, 0), readField<quint32>(answer, 0)));
        }
        data += answer.mid(wordBytes);
        if (progressed) {
            progressed(std::min(static_cast<quint32>(data.size()), count));
        }
    }
    data.truncate(static_cast<int>(count));
    return data;
}

void GvcpClient::writeMemory(quint32 address, const QByteArray& data, const Progressed& progressed)
{
    if (data.size() % wordBytes != 0) {
        throw Failure(ExitCode::Usage,
                      fmt::format("memory is written in whole words of {} bytes, {} bytes are none",
                                  wordBytes, data.size()));
    }
    for (int done = 0; done < data.size();) {
        const QByteArray part = data.mid(done, static_cast<int>(dataSizeMaxBytes));
        const quint32 to = address + static_cast<quint32>(done);
        GVCPMemoryWriteCommandPacket command(d->ids.next(), to, part);
        command.setFlags(GVCPPacket::AckRequired);
        d->ask(command, "write " + memoryText(to, static_cast<quint32>(part.size())));
        done += part.size();
        if (progressed) {
            progressed(static_cast<quint32>(done));
        }
    }
}

void GvcpClient::takeControl()
{
    d->controlLost = false;
    d->control.emplace(); // before the answer, which may be lost while the privilege is ours
    try {
        writeRegister(BootstrapRegister::ControlPrivilege, controlAccess);
    } catch (const GvcpRefusal& refusal) {
        d->control.reset();
        throw GvcpRefusal("take control of " + d->device.toStdString(), refusal.status());
    }
    std::chrono::milliseconds timeout = heartbeatDefault;
    try {
        timeout = std::chrono::milliseconds(readRegister(BootstrapRegister::HeartbeatTimeout));
    } catch (const GvcpRefusal&) { // a device without the register has the standard's own time-out
    }
    d->control->beatPause = std::max<stack::Duration>(timeout, heartbeatMin) / beatsPerTimeout;
    d->control->nextBeat = d->loop.now() + d->control->beatPause;
}

bool GvcpClient::inControl() const
{
    return d->control.has_value();
}

void GvcpClient::giveControlBack() noexcept
{
    if (!d->control) {
        return;
    }
    d->control.reset();
    const Timing timing = d->timing;
    d->timing.answer = std::min<stack::Duration>(timing.answer, giveBackAnswer);
    d->timing.tries = giveBackTries;
    d->timing.pendingMax = giveBackAnswer * giveBackTries;
    d->interrupts = Loop::Interrupts::Ignored;
    try {
        writeRegister(BootstrapRegister::ControlPrivilege, 0);
    } catch (const std::exception&) { // the device takes it back by itself, when the heartbeat stays away
    }
    d->interrupts = Loop::Interrupts::EndTheWait;
    d->timing = timing;
}

void GvcpClient::keepControl(TimePoint now)
{
    d->keepControl(now);
}

bool GvcpClient::await(TimePoint deadline, const Loop::Turn& turn)
{
    return d->loop.await(deadline, [this, &turn](TimePoint now) {
        keepControl(now);
        return turn(now);
    });
}

ControlPrivilege::ControlPrivilege(GvcpClient& client)
    : m_client(client)
{
    try {
        m_client.takeControl();
    } catch (const Failure&) {
        m_client.giveControlBack(); // it may have been granted, with the answer lost
        throw;
    }
}

ControlPrivilege::~ControlPrivilege()
{
    m_client.giveControlBack();
}

} // namespace mesk::host
