#include "host/gvcp/GvcpClient.h"

#include "host/gvcp/ActionSender.h"
#include "host/gvcp/DeviceDescription.h"
#include "host/gvcp/DeviceDiscovery.h"
#include "host/gvcp/MessageChannel.h"
#include "host/gvcp/RequestIds.h"
#include "tests/host/TestNet.h"

#include "gvcp/GVCPDiscoveryAckPacket.h"

#include <gmock/gmock.h>

using namespace mesk::host;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr quint16 readCode = 0x80, writeCode = 0x82, readMemoryCode = 0x84;

QByteArray hex(const char* text)
{
    return QByteArray::fromHex(text);
}

/// What a call throws, as text; empty for nothing.
template <typename Call>
std::string failureOf(const Call& call, ExitCode code = ExitCode::Nothing)
{
    try {
        call();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code(), code) << failure.what();
        return failure.what();
    }
    return "";
}

struct GvcpClientTest : testing::Test {
    /// The payloads, from the header's end on, of the commands with a code.
    std::vector<QByteArray> payloads(quint16 code) const
    {
        std::vector<QByteArray> found;
        for (const auto& command : net.commands)
            if (command.code() == code)
                found.push_back(command.bytes.mid(8));
        return found;
    }

    TestNet net;
    GvcpClient client{net.own, net, IpAddress(TestNet::deviceIp), {}};
};

TEST_F(GvcpClientTest, sendsACommandAgainWithItsIdUntilItIsAnswered)
{
    net.answer = [this](const auto& command) {
        if (net.commands.size() == 3)
            net.acknowledge(command, hex("00000dac"));
    };
    EXPECT_EQ(client.readRegister(0x938), 0xdacU);
    ASSERT_EQ(net.commands.size(), 3U);
    EXPECT_EQ(net.commands[0].bytes, net.commands[2].bytes);
    EXPECT_EQ(net.msBetween(0, 1), 400);
    EXPECT_EQ(net.commands[0].bytes.mid(0, 6) + net.commands[0].bytes.mid(8), hex("420100800004 00000938"));
    net.answer = {};
    EXPECT_EQ(failureOf([&] { client.readRegister(4); }),
              "read register 0x00000004: 10.0.0.20 does not answer");
    EXPECT_EQ(net.commands.size(), 7U);
    EXPECT_NE(net.commands[3].id(), net.commands[2].id());
}

TEST_F(GvcpClientTest, takesTheAcknowledgeOfThisCommandAlone)
{
    quint16 before = 0;
    net.answer = [&](const auto& command) {
        const QByteArray wrong = hex("ffffffff");
        const GVCPAckPacket good(0, GVCPCommandPacket(command.bytes), wrong, NetworkOrder);
        net.say(command, GVCPAckPacket(0, readCode + 1, before, wrong, NetworkOrder).serialize());
        net.say(command, GVCPAckPacket(0, writeCode + 1, command.id(), wrong, NetworkOrder).serialize());
        net.say(command, good.serialize().chopped(1));
        net.device.sendUdpFrame(net.own.mac(), IpAddress(0x0a000015), IpAddress(TestNet::ownIp), 3956,
                                command.fromPort, good.serialize());
        net.device.sendUdp(IpAddress(TestNet::ownIp), command.fromPort, 3957, good.serialize(), net.now());
        net.acknowledge(command, hex("00000001"));
        net.acknowledge(command, wrong); // twice: too late
        before = command.id();
    };
    EXPECT_EQ(client.readRegister(0), 1U);
    EXPECT_EQ(client.readRegister(0), 1U);
    EXPECT_EQ(net.commands.size(), 2U);
}

TEST_F(GvcpClientTest, waitsLongerForWhatIsPendingButNotForEver)
{
    const auto pending = [this](const auto& command) {
        net.say(command, GVCPAckPacket(0, 0x89, command.id(), hex("000007d0"), NetworkOrder).serialize());
    };
    net.answer = pending;
    const auto start = net.now();
    net.tick = [&] {
        if (net.now() - start == std::chrono::milliseconds(2300))
            net.acknowledge(net.commands.back(), hex("00c0ffee"));
    };
    EXPECT_EQ(client.readRegister(0x10000), 0xc0ffeeU);
    EXPECT_EQ(net.commands.size(), 1U) << "not sent again meanwhile";
    net.tick = [&] {
        if ((net.now() - start) % std::chrono::seconds(1) == std::chrono::seconds(0))
            pending(net.commands.back());
    };
    EXPECT_THAT(failureOf([&] { client.readRegister(0x10000); }), HasSubstr("does not answer"));
    EXPECT_LT(net.now() - start, std::chrono::seconds(130));
}

TEST(RequestIds, passOverZero)
{
    RequestIds ids(0xfffe);
    EXPECT_EQ(ids.next(), 0xffff);
    EXPECT_EQ(ids.next(), 1);
}

TEST_F(GvcpClientTest, readsRegistersAtOnceAndElseOneByOne)
{
    int honest = 2; // commands that are answered with all their values
    net.answer = [&](const auto& command) {
        const QByteArray values = command.bytes.mid(8); // each register holds its own address
        const bool all = values.size() == 4 || honest-- > 0;
        net.acknowledge(command, all ? values : values.left(4));
    };
    std::vector<quint32> addresses(140);
    for (std::size_t index = 0; index < addresses.size(); ++index)
        addresses[index] = static_cast<quint32>(index * 4);
    EXPECT_EQ(client.readRegisters(addresses), addresses);
    EXPECT_EQ(net.commands.size(), 2U) << "135 and 5";
    EXPECT_EQ(client.readRegisters({8, 12}), (std::vector<quint32>{8, 12}));
    EXPECT_EQ(net.commands.size(), 5U) << "both, then each";
    net.answer = [&](const auto& command) {
        const bool bad = command.bytes.endsWith(hex("fffffff0"));
        net.acknowledge(command, bad ? QByteArray() : command.bytes.mid(8), bad ? 0x8003 : 0);
    };
    EXPECT_EQ(failureOf([&] {
                  client.readRegisters({8, 0xfffffff0});
              }),
              "read register 0xfffffff0: invalid address (0x8003)");
}

TEST_F(GvcpClientTest, splitsMemoryIntoMessages)
{
    QByteArray memory(1200, '\0');
    for (int at = 0; at < memory.size(); ++at)
        memory[at] = static_cast<char>(at * 7);
    int shift = 0;
    net.answer = [&](const auto& command) {
        const int at = command.bytes.mid(10, 2).toHex().toInt(nullptr, 16) - 0x1000;
        const int count = command.bytes.mid(14, 2).toHex().toInt(nullptr, 16);
        const bool reads = command.code() == readMemoryCode;
        if (!reads)
            memory.replace(at, command.bytes.size() - 12, command.bytes.mid(12));
        net.acknowledge(command,
                        reads ? command.bytes.mid(8, 4) + memory.mid(at, count + shift) : hex("00000000"));
    };
    std::vector<quint32> told;
    EXPECT_EQ(client.readMemory(0x1000, 1081, [&](quint32 done) { told.push_back(done); }),
              memory.left(1081));
    EXPECT_THAT(told, ElementsAre(536, 1072, 1081));
    EXPECT_THAT(payloads(readMemoryCode),
                ElementsAre(hex("00001000 0000 0218"), hex("00001218 0000 0218"), hex("00001430 0000 000c")));
    const QByteArray data(1080, 'x');
    client.writeMemory(0x1004, data);
    EXPECT_EQ(memory.mid(4, 1080), data);
    ASSERT_EQ(net.commands.size(), 6U);
    EXPECT_EQ(net.commands.back().bytes.mid(8), hex("00001434") + data.left(8));
    EXPECT_THAT(failureOf([&] { client.writeMemory(0x1000, "odd"); }, ExitCode::Usage), HasSubstr("3 bytes"));
    shift = -4;
    EXPECT_EQ(failureOf([&] { client.readMemory(0x1000, 16); }),
              "read 16 bytes of memory at 0x00001000: the device answers with 12 bytes of 0x00001000");
}

TEST_F(GvcpClientTest, keepsControlAndGivesItBackWhateverHappens)
{
    quint32 privilege = 0;
    bool denied = false;
    net.answer = [&](const auto& command) {
        const QByteArray payload = command.bytes.mid(8);
        if (command.code() == writeCode && !denied && payload.startsWith(hex("00000a00")))
            privilege = static_cast<quint8>(payload.at(7));
        if (payload == hex("00000000"))
            return; // nobody answers for register 0
        const bool heartbeat = payload == hex("00000938");
        const QByteArray value = heartbeat ? hex("000005dc") : hex("000000") + static_cast<char>(privilege);
        net.acknowledge(command, command.code() == readCode ? value : hex("00000001"), denied ? 0x8006 : 0);
    };
    const auto wait = [&](int ms) {
        client.await(net.now() + std::chrono::milliseconds(ms), [](auto) { return false; });
    };
    {
        const ControlPrivilege control(client);
        EXPECT_EQ(privilege, 2U);
        const std::size_t before = net.commands.size();
        wait(2100);
        EXPECT_EQ(net.commands.size(), before + 4) << "a sign of life each third of 1500 ms";
        net.interrupted = true;
        EXPECT_EQ(failureOf([&] { client.readRegister(0); }, ExitCode::Interrupted), "interrupted");
    }
    EXPECT_EQ(privilege, 0U) << "after Ctrl-C";
    net.interrupted = false;
    {
        const ControlPrivilege control(client);
        privilege = 0; // the device takes it away
        wait(1000);
        EXPECT_FALSE(client.inControl());
        EXPECT_THAT(failureOf([&] { client.writeRegister(0x938, 1); }),
                    HasSubstr("has ended this side's control"));
    }
    denied = true;
    EXPECT_EQ(failureOf([&] { const ControlPrivilege control(client); }),
              "take control of 10.0.0.20: access denied (0x8006)");
    EXPECT_EQ(net.commands.back().bytes.mid(8), hex("00000a00 00000002")) << "nothing to give back";
    net.answer = {};
    EXPECT_THAT(failureOf([&] { const ControlPrivilege control(client); }), HasSubstr("does not answer"));
    EXPECT_EQ(net.commands.back().bytes.mid(8), hex("00000a00 00000000")) << "the answer alone may be lost";
}

TEST_F(GvcpClientTest, tellsEachEventOnceInEveryLayout)
{
    net.answer = [this](const auto& command) { net.acknowledge(command, hex("00000001")); };
    std::vector<quint16> acknowledged;
    net.device.bind(40000, [&](const mesk::stack::Datagram& datagram, auto) {
        acknowledged.push_back(GVCPAckPacket(datagram.data).requestId());
    });
    std::vector<DeviceEvent> events;
    {
        const ControlPrivilege control(client);
        const MessageChannel channel(net.own, client,
                                     [&](const DeviceEvent& event) { events.push_back(event); });
        EXPECT_THAT(payloads(writeCode), ElementsAre(hex("00000a00 00000002"), hex("00000b10 0a000001"),
                                                     hex("00000b00 0000cedd")));
        const QByteArray one = hex("420100c0001022660000 9092ffff0000000000cdd8f16adf");
        for (const QByteArray& message :
             {one, one, hex("421000c000182268000090b8000600009755d4c13a9029311a2b8f1ff1fd42a2"),
              hex("420100c20018226b000090a10007b9404be03db0dc2574bd0adc3ebef6822b55"),
              hex("4201008000040001 00000000")})
            net.device.sendUdp(IpAddress(TestNet::ownIp), MessageChannel::localPort, 40000, message,
                               net.now());
        net.device.sendUdpFrame(net.own.mac(), IpAddress(0x0a000015), IpAddress(TestNet::ownIp), 40000,
                                MessageChannel::localPort,
                                hex("420100c00010226700009092ffff0000000000cdd8f16adf"));
        net.await(net.now() + std::chrono::milliseconds(1), [](auto) { return false; });
    }
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0].id, 0x9092);
    EXPECT_EQ(events[0].timestamp, 0xcdd8f16adfU);
    EXPECT_EQ(events[1].blockId, 0x9755d4c13a902931U);
    EXPECT_EQ(events[1].timestamp, 0x1a2b8f1ff1fd42a2U);
    EXPECT_EQ(events[2].blockId, 0xb940);
    EXPECT_EQ(events[2].data, hex("0adc3ebef6822b55"));
    EXPECT_THAT(acknowledged, ElementsAre(0x2266, 0x2266, 0x226b)) << "as far as asked for";
    EXPECT_THAT(payloads(writeCode).at(3), hex("00000b00 00000000"));
    EXPECT_THAT(payloads(writeCode).at(4), hex("00000a00 00000000"));
}

TEST_F(GvcpClientTest, findsEachDeviceOnce)
{
    net.answer = [this](const auto& command) {
        GVCPDiscoveryAckPacket ack(0, command.id());
        ack.setModelName("Fake");
        ack.setMacAddress(MacAddress(2, 0, 0, 0, 0, 9));
        net.device.sendUdpFrame(net.own.mac(), IpAddress(), IpAddress(TestNet::ownIp), 3956, command.fromPort,
                                ack.serialize()); // one that has no address yet
        ack.setMacAddress({});
        net.say(command, ack.serialize()); // a block without addresses
        ack.setMacAddress(MacAddress(2, 0, 0, 0, 0, 9));
        ack.setCurrentIp(IpAddress(0x0a000009));
        net.say(command, ack.serialize());
        GVCPDiscoveryAckPacket other(0, static_cast<quint16>(command.id() + 1));
        other.setCurrentIp(IpAddress(0x0a000007));
        net.say(command, other.serialize());
    };
    const auto start = net.now();
    const auto found = discoverDevices(net.own, net, std::chrono::seconds(1));
    EXPECT_EQ(net.now() - start, std::chrono::seconds(1));
    EXPECT_EQ(net.commands.size(), 3U);
    EXPECT_EQ(net.commands[0].bytes.left(6), hex("421100020000"));
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].address.toStdString() + found[0].mac.toStdString(":"), "10.0.0.902:00:00:00:00:09");
    EXPECT_EQ(found[1].address.toStdString() + found[1].mac.toStdString(":"), "10.0.0.2002:00:00:00:00:02");
    EXPECT_EQ(discoverDevices(net.own, net, std::chrono::seconds(1), 2).size(), 2U);
    EXPECT_EQ(net.commands.size(), 4U) << "enough at the first answers";
    net.answer = [this](const auto& command) {
        for (quint32 number = 0; number <= devicesMax; ++number) {
            GVCPDiscoveryAckPacket ack(0, command.id());
            ack.setCurrentIp(IpAddress(0x0a010000 + number));
            net.say(command, ack.serialize());
        }
    };
    EXPECT_EQ(discoverDevices(net.own, net, std::chrono::seconds(1)).size(), devicesMax) << "a flood";
}

TEST_F(GvcpClientTest, sendsAnActionOnceAndTakesEachDevicesAnswerOnce)
{
    net.answer = [this](const auto& command) {
        net.acknowledge(command, {}, 0x8013);
        net.acknowledge(command, {});
        net.say(
            command,
            GVCPAckPacket(0, 0x101, static_cast<quint16>(command.id() + 1), {}, NetworkOrder).serialize());
    };
    const auto answers =
        sendAction(net.own, net, IpAddress::broadcast(), {1, 0x20, 0xff}, std::chrono::seconds(1));
    ASSERT_EQ(net.commands.size(), 1U);
    EXPECT_EQ(net.commands[0].bytes.left(6) + net.commands[0].bytes.mid(8),
              hex("42010100000c 00000001 00000020 000000ff"));
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_EQ(answers[0].status, 0x8013);
}

TEST(DeviceDescription, isFoundAndSummed)
{
    const auto place =
        parseDescriptionUrl(QByteArray("local:arv fake.xml;10000;3e67?SchemaVersion=1.1\0;x", 44));
    ASSERT_TRUE(place);
    EXPECT_EQ(place->fileName, "arv fake.xml");
    EXPECT_EQ(place->address, 0x10000U);
    EXPECT_EQ(place->sizeBytes, 0x3e67U);
    for (const char* text : {"", "http://host/a.xml", "Local:a.xml;10000", "Local:a.xml;zz;10", "File:a;1;2"})
        EXPECT_FALSE(parseDescriptionUrl(text)) << text;
    const QByteArray xml =
        "<RegisterDescription ModelName='M'><Category Name='Root'><pFeature>Width</pFeature>"
        "<pFeature>More</pFeature></Category><Category Name='More'><pFeature>Width</pFeature>"
        "<pFeature>Gain</pFeature></Category><Integer Name='Width'><pFeature>X</pFeature>"
        "</Integer></RegisterDescription>";
    ASSERT_TRUE(summarizeDescription(xml));
    EXPECT_EQ(summarizeDescription(xml)->modelName, "M");
    EXPECT_EQ(summarizeDescription(xml)->features, 2);
    EXPECT_FALSE(summarizeDescription(xml.chopped(1)));

    // <RegisterDescription ModelName="zipped"/>, by another program's zip
    QByteArray archive =
        hex("504b0304140000000800000021007b6a15df2b0000002900000005000000612e786d6cb3094a4dcf2c2e492d72492d4e"
            "2eca2c28c9cccf53f0cd4f49cdf14bcc4db555aaca2c28484d51d2b70300504b01021403140000000800000021007b6a"
            "15df2b00000029000000050000000000000000000000800100000000612e786d6c504b05060000000001000100330000"
            "004e0000000000");
    ASSERT_TRUE(summarizeDescription(archive));
    EXPECT_EQ(summarizeDescription(archive)->modelName, "zipped");
    for (int size = 0; size < archive.size(); ++size)
        EXPECT_FALSE(summarizeDescription(archive.left(size))) << size;
    archive[40] = char(archive.at(40) ^ 1);
    EXPECT_FALSE(summarizeDescription(archive)) << "another byte than the checksum says";
}

} // namespace
