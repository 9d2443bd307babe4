#pragma once

#include "packets/ArpPacket.h"
#include "packets/ByteArrayHelpers.h"
#include "packets/EthernetFrame.h"
#include "packets/IPv4Packet.h"
#include "packets/UdpPacket.h"
#include "stand-ins/camera/CameraDevice.h"
#include "tests/packets/TestBytes.h"

#include <gmock/gmock.h>

using namespace emulated_camera;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

inline IpAddress ip(const char* text)
{
    IpAddress address;
    address.parse(QByteArray(text));
    return address;
}

/// One who sends commands.
struct Client {
    MacAddress mac{0x02, 0x4b, 0, 0, 0, 1};
    IpAddress address = ip("192.168.77.1");
    quint16 port = 50000;
};

/// A device on a wire, in a time that passes when it is told to.
class CameraBench {
public:
    explicit CameraBench(const std::string& setup = {}, bool waitForAddress = true)
        : mac(parseCameraSetup(setup, {}).mac)
        , camera(parseCameraSetup(setup, {}), [this](const QByteArray& frame) { sent.push_back(frame); })
    {
        camera.powerOn(now);
        if (!waitForAddress)
            return;
        pass(1s);
        sent.clear();
    }

    void pass(mesk::stack::Duration time)
    {
        const auto end = now + time;
        for (; camera.nextDeadline() <= end; camera.expire(now))
            now = std::max(now, camera.nextDeadline());
        now = end;
    }
    /// The datagrams that the device sent since it was last asked.
    std::vector<QByteArray> heard()
    {
        std::vector<QByteArray> datagrams;
        for (const QByteArray& frame : sent) {
            const IPv4Packet packet(frame.mid(14));
            if (frame.mid(12, 2) == hex("0800") && packet.protocol() == UdpPacket::Protocol)
                datagrams.push_back(UdpPacket(packet.payload()).payload());
        }
        sent.clear();
        return datagrams;
    }
    void tell(const QByteArray& message, const Client& client = {}, bool broadcast = false)
    {
        UdpPacket udp(client.port, 3956, message, true);
        IPv4Packet packet(client.address, broadcast ? IpAddress::broadcast() : camera.address().address,
                          &udp);
        camera.receive(
            EthernetFrame(client.mac, broadcast ? MacAddress::broadcast() : mac, &packet).serialize(), now);
    }
    std::vector<QByteArray> ask(const QByteArray& message, const Client& client = {}, bool broadcast = false)
    {
        heard();
        tell(message, client, broadcast);
        return heard();
    }
    /// Sends a command under a new id.
    /// @param codeAndPayload without length and id, which stand between the two.
    /// @returns the one answer: status, code and payload; nothing if there is none.
    QByteArray command(const char* codeAndPayload, const Client& client = {},
                       const char* keyAndFlags = "4201")
    {
        const QByteArray body = hex(codeAndPayload);
        const QByteArray id = byteArrayFromUInt16(qToBigEndian(++lastId));
        const QByteArray length = byteArrayFromUInt16(qToBigEndian(quint16(body.size() - 2)));
        const auto answers = ask(hex(keyAndFlags) + body.left(2) + length + id + body.mid(2), client);
        if (answers.empty())
            return {};
        EXPECT_EQ(answers.size(), 1U);
        EXPECT_EQ(readField<quint16>(answers[0], 4), answers[0].size() - 8);
        EXPECT_EQ(answers[0].mid(6, 2), id);
        return answers[0].left(4) + answers[0].mid(8);
    }
    QByteArray takeControl() { return command("0082 00000a00 00000002"); }
    void arp(const char* digits) { camera.receive(hex(digits).leftJustified(60, '\0'), now); }

    MacAddress mac;
    std::vector<QByteArray> sent;
    mesk::stack::TimePoint now{1h};
    quint16 lastId = 0x1000;
    CameraDevice camera;
};
