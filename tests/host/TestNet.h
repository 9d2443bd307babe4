#pragma once

#include "gvcp/GVCPAckPacket.h"
#include "gvcp/GVCPCommandPacket.h"
#include "host/net/Loop.h"
#include "stack/NetworkNode.h"

#include <deque>
#include <vector>

/// Two nodes on one wire and a clock that is turned by hand: the own one, for what is tested, and a
/// device's, whose answers a test scripts. A wait passes in no time, a millisecond a turn.
class TestNet : public mesk::host::Loop {
public:
    using TimePoint = mesk::stack::TimePoint;
    struct Command {
        TimePoint at;
        QByteArray bytes;
        quint16 fromPort;
        quint16 id() const { return GVCPCommandPacket(bytes).requestId(); }
        quint16 code() const { return GVCPCommandPacket(bytes).command(); }
    };

    static constexpr quint32 ownIp = 0x0a000001, deviceIp = 0x0a000014;

    TestNet()
        : own(MacAddress(2, 0, 0, 0, 0, 1), [this](const QByteArray& frame) { m_toDevice.push_back(frame); })
        , device(MacAddress(2, 0, 0, 0, 0, 2), [this](const QByteArray& frame) { m_toOwn.push_back(frame); })
    {
        own.setAddress({IpAddress(ownIp), 24});
        device.setAddress({IpAddress(deviceIp), 24});
        device.bind(GVCPPacket::Port, [this](const mesk::stack::Datagram& datagram, TimePoint now) {
            commands.push_back({now, datagram.data, datagram.senderPort});
            if (answer) {
                answer(commands.back());
            }
        });
    }

    TimePoint now() const override { return m_now; }
    End runUntil(TimePoint deadline, Interrupts interrupts, const Turn& turn) override
    {
        for (;;) {
            deliver();
            if (turn(m_now)) {
                return End::Done;
            }
            if (interrupted && interrupts == Interrupts::EndTheWait) {
                return End::Interrupted;
            }
            if (m_now >= deadline) {
                return End::Deadline;
            }
            m_now += std::chrono::milliseconds(1);
            if (tick) {
                tick();
            }
        }
    }

    /// What the device says to the asker of a command.
    void say(const Command& to, const QByteArray& bytes)
    {
        device.sendUdp(IpAddress(ownIp), to.fromPort, GVCPPacket::Port, bytes, m_now);
    }
    void acknowledge(const Command& to, const QByteArray& payload, quint16 status = 0)
    {
        say(to, GVCPAckPacket(status, GVCPCommandPacket(to.bytes), payload, NetworkOrder).serialize());
    }
    std::int64_t msBetween(std::size_t first, std::size_t second) const
    {
        return (commands.at(second).at - commands.at(first).at) / std::chrono::milliseconds(1);
    }

    mesk::stack::NetworkNode own;
    mesk::stack::NetworkNode device;
    std::vector<Command> commands; ///< that came to the device
    std::function<void(const Command&)> answer;
    std::function<void()> tick; ///< called each millisecond
    bool interrupted = false;

private:
    void deliver()
    {
        while (!m_toDevice.empty() || !m_toOwn.empty()) {
            for (auto* way : {&m_toDevice, &m_toOwn}) {
                std::deque<QByteArray> frames;
                frames.swap(*way);
                for (const QByteArray& frame : frames) {
                    (way == &m_toOwn ? own : device).receive(frame, m_now);
                }
            }
        }
        own.expire(m_now);
        device.expire(m_now);
    }

    TimePoint m_now{std::chrono::hours(1)};
    std::deque<QByteArray> m_toDevice;
    std::deque<QByteArray> m_toOwn;
};
