#include "packets/ByteArrayHelpers.h"
#include "packets/DhcpPacket.h"
#include "stack/DhcpClient.h"
#include "stack/DhcpServer.h"
#include "tests/packets/TestBytes.h"
#include "tests/stack/TestWire.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using State = DhcpClient::State;
using LeaseState = DhcpServer::LeaseState;

namespace {
constexpr int messageAt = 14 + 20 + 8, xidAt = messageAt + 4, yiaddrAt = messageAt + 16,
              chaddrAt = messageAt + 28;

bool isDhcp(const QByteArray& frame)
{
    return readField<quint16>(frame, 12) == 0x0800 && frame[23] == 17 && frame.size() > messageAt + 240 &&
           DhcpPacket::isDhcpPorts(readField<quint16>(frame, 34), readField<quint16>(frame, 36));
}

/// Message type, address given, and whether it goes to all: "2:158" or "2:158*".
std::string told(const QByteArray& frame)
{
    const DhcpPacket packet(frame.mid(messageAt));
    const quint32 yiaddr = packet.yiaddr().toUInt32();
    const bool toAll = readField<quint32>(frame, 30) == 0xffffffffU;
    EXPECT_EQ(toAll, readMacAddress(frame, 0).isBroadcast());
    return std::to_string(packet.option(53).at(0)) +
           (yiaddr != 0 ? ":" + std::to_string(yiaddr & 0xff) : "") + (toAll ? "*" : "");
}

struct TestClient {
    TestClient(TestWire& wire, quint8 last)
        : node(wire, macOf(last))
        , client(node, {},
                 {[this](auto&, auto) { ++bound; }, [this](auto) { ++lost; },
                  [this](auto& address, auto) { declined.push_back(address.toUInt32() & 0xff); },
                  [this](auto) { ++refused; }},
                 last)
    {
        wire.add(client);
        client.start(wire.now);
    }
    quint32 address() const { return node.address().address.toUInt32() & 0xff; }

    int bound = 0, lost = 0, refused = 0;
    std::vector<quint32> declined;
    TestNode node;
    DhcpClient client;
};

class Dhcp : public testing::Test {
protected:
    Dhcp()
    {
        serve(100, 101);
        wire.clocked.push_back(
            {[this] { return server->nextDeadline(); }, [this](TimePoint at) { server->expire(at); }});
    }
    void serve(quint8 first, quint8 last, std::chrono::seconds time = 80s)
    {
        server.reset();
        server = std::make_unique<DhcpServer>(serverNode, DhcpServer::Pool{ip(first), ip(last)}, time,
                                              DhcpServer::Events{});
    }
    /// What was told since the last call.
    std::string log()
    {
        std::string text;
        for (const QByteArray& frame : wire.sent)
            if (isDhcp(frame))
                text += told(frame) + " ";
        wire.sent.clear();
        return text;
    }
    std::vector<LeaseState> states() const
    {
        std::vector<LeaseState> all;
        for (const DhcpServer::Lease& each : server->leases())
            all.push_back(each.state);
        return all;
    }

    TestWire wire;
    TestNode serverNode{wire, macOf(0x20), net(20)};
    std::unique_ptr<DhcpServer> server;
};
} // namespace

TEST_F(Dhcp, leaseLivesAsLongAsTheServerAnswers)
{
    TestClient a(wire, 1);
    wire.run(2s);
    EXPECT_EQ(log(), "1* 2:100 3* 5:100 ");
    ASSERT_TRUE(a.client.lease());
    EXPECT_EQ(a.client.lease()->address.prefixBits, 24U);
    EXPECT_EQ(a.client.lease()->server, ip(20));
    EXPECT_EQ(a.client.lease()->expires, wire.now + 78s);
    wire.run(37s);
    EXPECT_EQ(log(), "");
    wire.run(2s);
    EXPECT_EQ(log(), "3 5:100 ") << "at half of the time, to the server alone";
    EXPECT_EQ(a.bound, 2);
    wire.loses = isDhcp;
    wire.run(68500ms);
    EXPECT_EQ(a.client.state(), State::Renewing);
    EXPECT_EQ(log().find('*'), std::string::npos);
    wire.run(1200ms);
    EXPECT_EQ(log(), "3* ") << "at seven eighths, to everybody";
    EXPECT_EQ(a.lost, 0);
    wire.run(9400ms);
    EXPECT_EQ(a.lost, 1);
    EXPECT_FALSE(a.node.address().isThere());
    EXPECT_THAT(states(), ElementsAre(LeaseState::Released));
    wire.loses = nullptr;
    wire.run(20s);
    EXPECT_EQ(a.address(), 100U) << "the same one again";
    log();
    a.client.renew(wire.now);
    wire.run(1s);
    a.client.release(wire.now);
    wire.run(0s);
    EXPECT_EQ(log(), "3 5:100 7 ");
    EXPECT_THAT(states(), ElementsAre(LeaseState::Released));
    EXPECT_TRUE(a.client.state() == State::Stopped && !a.node.address().isThere() && wire.next() == never);

    serve(100, 101, std::chrono::seconds(0xffffffffU));
    a.node.setAddress(net(200)); // of a fallback: what goes to another address alone isn't taken
    a.client.start(wire.now);
    wire.run(3s);
    EXPECT_EQ(log(), "1* 2:100* 3* 5:100* ");
    EXPECT_TRUE(a.address() == 100 && wire.next() == never && a.client.lease()->expires == never);
}

TEST_F(Dhcp, shortestLeaseIsRenewedTwiceASecond)
{
    serve(100, 101, 1s);
    TestClient a(wire, 1);
    wire.run(10300ms);
    EXPECT_EQ(std::make_pair(a.bound, a.lost), std::make_pair(21, 0));
}

TEST_F(Dhcp, clientsOutlastLostFrames)
{
    for (const int k : {3, 4, 5, 7}) {
        SCOPED_TRACE(k);
        serve(100, 110);
        int count = 0;
        wire.loses = [&, k](const QByteArray&) { return ++count % k == 0; };
        const std::size_t others = wire.clocked.size();
        {
            TestClient a(wire, 1), b(wire, 2);
            wire.run(60s);
            EXPECT_NE(a.address(), b.address());
            wire.run(1000s);
            EXPECT_TRUE(a.lost == 0 && b.lost == 0 && a.bound > 10 && b.bound > 10);
            EXPECT_THAT(states(), ElementsAre(LeaseState::Bound, LeaseState::Bound));
        }
        wire.clocked.resize(others);
        wire.nodes.resize(1);
    }
}

TEST_F(Dhcp, addressInUseIsDeclinedAndAnotherOneTaken)
{
    TestNode squatter(wire, macOf(9), net(100));
    TestClient a(wire, 1);
    wire.run(2s);
    EXPECT_THAT(a.declined, ElementsAre(100U));
    EXPECT_THAT(states(), ElementsAre(LeaseState::Declined));
    EXPECT_EQ(log(), "1* 2:100 3* 5:100 4* ");
    wire.run(7s);
    EXPECT_EQ(log(), "") << "not at once";
    wire.run(3s);
    EXPECT_EQ(a.address(), 101U);
    TestClient b(wire, 2);
    wire.run(5s);
    EXPECT_TRUE(server->isExhausted() && server->discoversUnanswered() > 1);
    log();
    a.client.decline(wire.now); // somebody uses this one too
    EXPECT_TRUE(a.lost == 1 && !a.node.address().isThere());
    wire.run(1s);
    EXPECT_EQ(log().substr(0, 3), "4* ");
    EXPECT_THAT(states(), ElementsAre(LeaseState::Declined, LeaseState::Declined));
    EXPECT_THAT(a.declined, ElementsAre(100U, 101U));
    wire.run(DhcpServer::declineTime + 17s);
    EXPECT_EQ(a.address() + b.address(), 101U) << "the squatter still has the other one";
}

TEST_F(Dhcp, clientStopsEvenWhileItsProbeGoesOut)
{
    TestClient a(wire, 1);
    wire.loses = [&](const QByteArray& frame) {
        const bool isProbe = readField<quint16>(frame, 12) == 0x0806 && readField<quint32>(frame, 28) == 0;
        if (isProbe)
            a.client.stop();
        return isProbe;
    };
    wire.run(10s);
    a.client.decline(wire.now); // there is nothing to decline
    EXPECT_EQ(log(), "1* 2:100 3* 5:100 ");
    EXPECT_TRUE(a.client.state() == DhcpClient::State::Stopped && !a.node.address().isThere());
}

TEST_F(Dhcp, refusedClientStartsAgain)
{
    serve(100, 100);
    TestClient a(wire, 1);
    wire.run(2s);
    serve(100, 100); // it forgot everything
    a.client.renew(wire.now);
    wire.run(1s);
    EXPECT_EQ(a.bound, 2) << "and grants what is free";
    serve(100, 100);
    TestClient b(wire, 2); // is offered a's address, finds a there and declines
    wire.run(2s);
    log();
    a.client.renew(wire.now);
    wire.run(500ms);
    EXPECT_EQ(log(), "3 6* ");
    EXPECT_TRUE(a.refused == 1 && a.lost == 1 && !a.node.address().isThere());
    wire.run(2s);
    EXPECT_EQ(log().substr(0, 3), "1* ");
    serverNode.setAddress(net(101)); // not leased itself, nor the ends of its net
    for (const quint8 last : {quint8(0), quint8(101), quint8(255)}) {
        serve(last, last);
        EXPECT_TRUE(server->isExhausted());
    }
}

namespace {
struct RealServer {
    const char* capture;
    std::size_t offer, acknowledge;
    quint8 last;
    unsigned prefixBits;
    std::chrono::seconds renewal;
};
const RealServer realServers[] = {{"dhcp_dnsmasq_udhcpc", 7, 10, 158, 24, 60s},
                                  {"dhcp_dnsmasq_udhcpc", 7, 14, 158, 24, 55s},
                                  {"dhcp_dnsmasq_broadcast_flag", 6, 9, 158, 24, 60s},
                                  {"dhcp_udhcpd_udhcpc", 3, 5, 159, 24, 60s},
                                  {"dhcp_fixed_server", 2, 4, 159, 8, 60s}};
} // namespace

TEST_F(Dhcp, clientTakesLeasesOfRecordedServers)
{
    for (const RealServer& real : realServers) {
        SCOPED_TRACE(real.capture);
        const std::vector<QByteArray> frames = captured(real.capture);
        TestClient a(wire, 1);
        wire.clocked.erase(wire.clocked.end() - 2, wire.clocked.end());
        const auto give = [&](QByteArray frame, int at, int change) {
            frame.replace(xidAt, 4, wire.sent.back().mid(xidAt, 4));
            frame[at] = char(frame[at] ^ change);
            a.node.receive(frame, wire.now);
            return a.client.state();
        };
        const QByteArray &offer = frames[real.offer], &acknowledge = frames[real.acknowledge];
        const int serverAt = acknowledge.indexOf(hex("36040a4d01")) + 5;
        for (const int wrong : {xidAt, chaddrAt + 5, messageAt}) // another exchange or client, no answer
            EXPECT_EQ(give(offer, wrong, 2), State::Selecting);
        EXPECT_EQ(give(offer, yiaddrAt, 10 ^ 127), State::Selecting) << "no address to have";
        EXPECT_EQ(give(offer, 0, 0), State::Requesting);
        for (const int wrong : {xidAt, chaddrAt + 5, yiaddrAt + 3, serverAt})
            EXPECT_EQ(give(acknowledge, wrong, 1), State::Requesting);
        give(acknowledge, 0, 0);
        for (int i = 1; i <= 3; ++i)
            a.node.expire(wire.now += 100ms);
        ASSERT_EQ(a.client.state(), State::Bound);
        EXPECT_EQ(a.node.address().address, ip(real.last));
        EXPECT_EQ(a.node.address().prefixBits, real.prefixBits);
        a.client.expire(wire.now + 2s);
        EXPECT_EQ(a.client.nextDeadline(), wire.now - 300ms + real.renewal);
        wire.nodes.pop_back();
    }
}

TEST_F(Dhcp, serverAnswersRecordedClientsAsRecordedServersDid)
{
    for (const char* name :
         {"dhcp_dnsmasq_udhcpc", "dhcp_dnsmasq_broadcast_flag", "dhcp_dnsmasq_dhclient", "dhcp_decline",
          "dhcp_udhcpd_udhcpc", "dhcp_fixed_server", "dhcp_fixed_client"}) {
        SCOPED_TRACE(name);
        std::vector<QByteArray> questions;
        std::string expected;
        quint8 first = 0;
        for (const QByteArray& frame : captured(name)) {
            if (!isDhcp(frame))
                continue;
            if (readField<quint16>(frame, 34) == DhcpPacket::ClientPort) {
                questions.push_back(frame);
                continue;
            }
            if (first == 0)
                first = quint8(frame[yiaddrAt + 3]);
            expected += told(frame) + " ";
            serverNode.setAddress(net(quint8(frame[29])));
        }
        serve(first, 159);
        for (const QByteArray& question : questions) {
            QByteArray toServer = question; // one server had another MAC address
            if (!readMacAddress(question, 0).isBroadcast())
                toServer[5] = 0x20;
            serverNode.receive(toServer, wire.now);
        }
        std::string answered = log();
        // Only dnsmasq minds the broadcast flag alone.
        if (std::string(name).find("dnsmasq") == std::string::npos)
            for (std::string* text : {&expected, &answered})
                text->erase(std::remove(text->begin(), text->end(), '*'), text->end());
        EXPECT_EQ(answered, expected);
    }
}

TEST_F(Dhcp, relayedAnswerGoesToTheRelayAndForeignRequestsEndAnOffer)
{
    const std::vector<QByteArray> frames = captured("dhcp_dnsmasq_udhcpc");
    serve(158, 159);
    QByteArray relayed = frames[1];
    relayed.replace(messageAt + 24, 4, hex("0a4d0232")); // from another net
    serverNode.receive(relayed, wire.now);
    EXPECT_TRUE(wire.sent.empty());
    relayed.replace(messageAt + 24, 4, hex("0a4d0132"));
    serverNode.receive(relayed, wire.now);
    const QByteArray& answer = wire.sent.back();
    EXPECT_EQ(answer.mid(30, 8), hex("0a4d0132 0043 0043"));
    EXPECT_EQ(answer.mid(yiaddrAt, 12), hex("0a4d019e 00000000 0a4d0132"));
    EXPECT_TRUE(answer.contains(hex("3d0701024b00000001"))) << "the client identifier comes back";
    EXPECT_THAT(states(), ElementsAre(LeaseState::Offered));
    QByteArray toOther = frames[9];
    toOther.replace(toOther.indexOf(hex("36040a4d0114")), 6, hex("36040a4d0115"));
    serverNode.receive(toOther, wire.now);
    EXPECT_THAT(states(), ElementsAre(LeaseState::Released));
    log();
    serverNode.receive(frames[9], wire.now);
    serverNode.receive(frames[1], wire.now); // it forgot its lease, which holds all the same
    EXPECT_THAT(states(), ElementsAre(LeaseState::Bound));
    QByteArray asksForAnother = frames[9];
    asksForAnother.replace(asksForAnother.indexOf(hex("32040a4d019e")), 6, hex("32040a4d019f"));
    serverNode.receive(asksForAnother, wire.now);
    EXPECT_TRUE(wire.sent.back().contains(hex("3d0701024b00000001"))) << "with a refusal too";
    EXPECT_EQ(log(), "5:158 2:158 6* ");
    serverNode.receive(frames[15], wire.now);
    EXPECT_THAT(states(), ElementsAre(LeaseState::Released));
    wire.run(DhcpServer::offerTime);
    relayed.replace(relayed.indexOf(hex("3d0701")), 9, hex("3d0000000000000000"));
    serverNode.receive(relayed, wire.now);
    EXPECT_FALSE(wire.sent.back().contains(hex("3dff"))) << "an empty identifier";
    wire.run(DhcpServer::offerTime);
    EXPECT_THAT(states(), ElementsAre(LeaseState::Released));
}

TEST_F(Dhcp, damagedFramesDoNoHarm)
{
    serve(156, 159);
    for (const char* name : {"dhcp_decline", "dhcp_fixed_client", "arp_icmp", "fragments", "vlan"}) {
        TestClient a(wire, std::string(name) == "dhcp_fixed_client" ? 0x63 : 0x01);
        const auto isOfClient = [&a](const QByteArray& frame) {
            return isDhcp(frame) && readMacAddress(frame, 6) == a.node.mac();
        };
        for (QByteArray frame : captured(name)) {
            if (frame.size() > 600 || frame.isEmpty())
                continue;
            if (isDhcp(frame)) // in the exchange of the client
                frame.replace(xidAt, 4,
                              std::find_if(wire.sent.rbegin(), wire.sent.rend(), isOfClient)->mid(xidAt, 4));
            for (NetworkNode* node : wire.nodes)
                forEachDamage(frame.replace(0, 6, node->mac().rawBytes()), [&](const QByteArray& damaged) {
                    wire.now += 100us;
                    node->receive(damaged, wire.now);
                    a.client.expire(wire.now);
                    a.node.expire(wire.now);
                });
        }
        EXPECT_LE(server->leases().size(), 4U);
        EXPECT_EQ(a.bound > 0 || !a.declined.empty(), name[0] == 'd') << name;
        wire.clocked.resize(2);
        wire.nodes.resize(1);
    }
}
