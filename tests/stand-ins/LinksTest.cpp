#include "stack/NetworkNode.h"
#include "tests/stand-ins/BoardDevice.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <net/if.h>
#include <netpacket/packet.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

// The links to the machine's network, in a network namespace of this process's own.

namespace {

using namespace mesk::tests;
using testing::HasSubstr;

constexpr unsigned testType = 0x88B5; // IEEE 802: for local experiments
constexpr int waitMaxMs = 5000;

void run(const std::string& command)
{
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

/// A program on the far side of a link: a packet socket at an interface.
class FarEnd {
public:
    explicit FarEnd(const std::string& interface)
        : m_socket(::socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, htons(testType)))
    {
        sockaddr_ll address{};
        address.sll_family = AF_PACKET;
        address.sll_protocol = htons(testType);
        address.sll_ifindex = int(::if_nametoindex(interface.c_str()));
        EXPECT_EQ(::bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0) << interface;
    }
    FarEnd(const FarEnd&) = delete;
    FarEnd& operator=(const FarEnd&) = delete;
    ~FarEnd() { ::close(m_socket); }

    bool send(const Bytes& frame) const
    {
        return ::send(m_socket, frame.data(), frame.size(), 0) == ssize_t(frame.size());
    }
    Bytes receive() const
    {
        Bytes frame(65536);
        pollfd waited{m_socket, POLLIN, 0};
        const ssize_t size =
            ::poll(&waited, 1, waitMaxMs) == 1 ? ::recv(m_socket, frame.data(), frame.size(), 0) : 0;
        frame.resize(std::size_t(std::max<ssize_t>(size, 0)));
        return frame;
    }

private:
    const int m_socket;
};

/// A frame from one station to another, of which neither is this machine.
Bytes frameOfType(std::size_t size, unsigned first = 0)
{
    Bytes frame = frameOf(size, first);
    frame[0] = frame[6] = 0x02;
    frame[12] = testType >> 8;
    frame[13] = testType & 0xFF;
    return frame;
}

KivoBoardLinkCounters linkCounters(const EmulatedBoard& board, std::uint32_t port = 0)
{
    KivoBoardLinkCounters result{};
    EXPECT_EQ(board.control().linkCounters(0, port, &result), 0);
    return result;
}

std::string plug(const EmulatedBoard& board, std::uint32_t port, const std::string& link)
{
    std::array<char, 500> error{};
    const bool done = board.control().plug(0, port, link.c_str(), error.data(), error.size()) == 0;
    return done ? "" : error.data();
}

class MachineLink : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        const uid_t user = ::getuid();
        if (::unshare(CLONE_NEWNET) != 0 &&
            (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0 ||
             !(std::ofstream("/proc/self/uid_map") << "0 " << user << " 1" << std::flush)))
            missing = "no network namespace of its own: " + std::string(std::strerror(errno));
        else if (const int driver = ::open("/dev/net/tun", O_RDWR | O_CLOEXEC); ::close(driver) != 0)
            missing = "/dev/net/tun can't be opened";
        // The system speaks IPv6 unasked.
        else if (!(std::ofstream("/proc/sys/net/ipv6/conf/default/disable_ipv6") << 1 << std::flush))
            missing = "no interface without IPv6";
    }
    void SetUp() override
    {
        if (!missing.empty())
            GTEST_SKIP() << missing;
    }

    static std::string missing;
};
std::string MachineLink::missing;

struct Kind {
    std::string link;
    std::string farEnd; // the interface at the link's other end
    std::string make;   // what is to be there before the plug
};

class MachineLinks : public MachineLink, public testing::WithParamInterface<Kind> {
protected:
    void SetUp() override
    {
        MachineLink::SetUp();
        if (missing.empty())
            makeDevices();
    }
    void TearDown() override
    {
        if (missing.empty() && !GetParam().make.empty())
            deleteDevice();
    }
    static void makeDevices() { run(GetParam().make + "true"); }
    static void deleteDevice() { run("ip link del " + GetParam().farEnd); }
};

TEST_P(MachineLinks, carryFramesBothWaysAndNotTheirOwn)
{
    const EmulatedBoard board;
    const Device device;
    ASSERT_EQ(plug(board, 0, GetParam().link), "");
    const FarEnd far(GetParam().farEnd);
    for (const std::size_t size : {60U, 1514U}) {
        device.send(frameOfType(size));
        EXPECT_EQ(far.receive(), frameOfType(size));
    }
    for (const std::size_t size : {60U, 61U, 15U, 1514U}) {
        EXPECT_TRUE(far.send(frameOfType(size)));
        Bytes padded = frameOfType(size);
        padded.resize((size + 1) / 2 * 2);
        EXPECT_EQ(device.receive(0, waitMaxMs), transmission(padded, std::uint32_t(padded.size())));
    }
    device.send(frameOfType(1520)); // longer than the MTU
    device.write("GigeTxDisableCrcGeneration0", 1);
    device.send(frameOfType(64)); // its last four bytes are no check sequence
    EXPECT_TRUE(eventually([&] { return linkCounters(board).framesRefused == 2; }));
    const KivoBoardLinkCounters seen = linkCounters(board);
    EXPECT_EQ(seen.framesOut * 100 + seen.framesIn, 204U);
    EXPECT_EQ(seen.bytesOut * 10000 + seen.bytesIn, 15740000U + 60 + 61 + 15 + 1514);
    EXPECT_EQ(seen.framesLost + seen.errors, 0U);
    EXPECT_EQ(counters(board, 0, 0).refusedAtFarEnd, 1U);
    EXPECT_EQ(device.receive(0, 0), Words());
}

TEST_P(MachineLinks, countWhatFoundNoRoom)
{
    const EmulatedBoard board("[Board0]\nreceiveCapacity=70\npauseMs=60000\n");
    const Device device;
    ASSERT_EQ(plug(board, 0, GetParam().link), "");
    const FarEnd far(GetParam().farEnd);
    std::uint64_t sent = 0;
    for (unsigned i = 0; i < 5000; ++i)
        sent += far.send(frameOfType(60)) ? 1 : 0;
    EXPECT_GT(linkCounters(board).framesLost, 0U);
    EXPECT_TRUE(eventually([&] {
        while (!device.receive(0, 20).empty()) {
        }
        const KivoBoardLinkCounters now = linkCounters(board);
        return now.framesIn + now.framesLost == sent;
    })) << linkCounters(board).framesIn
        << " + " << linkCounters(board).framesLost << " of " << sent;
}

TEST_P(MachineLinks, goAwayWithTheDeviceAndThePortGoesOn)
{
    const EmulatedBoard board;
    const Device device;
    ASSERT_EQ(plug(board, 0, GetParam().link), "");
    testing::internal::CaptureStderr();
    run("ip link set " + GetParam().farEnd + " down");
    device.send(frameOfType(60));
    EXPECT_TRUE(eventually([&] { return linkCounters(board).errors + linkCounters(board).framesOut == 1; }));
    run("ip link set " + GetParam().farEnd + " up");
    const FarEnd far(GetParam().farEnd);
    device.send(frameOfType(60, 1));
    EXPECT_EQ(far.receive(), frameOfType(60, 1)) << "a device that is down for a while";

    deleteDevice();
    EXPECT_TRUE(eventually([&] { return linkCounters(board).isUp == 0; }));
    EXPECT_STRNE(linkCounters(board).reason, "");
    for (unsigned i = 0; i < 3; ++i)
        device.send(frameOfType(60));
    EXPECT_TRUE(eventually([&] { return linkCounters(board).framesRefused == 3; }));
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_THAT(told, HasSubstr(GetParam().link + " at port 0.0 went away: "));
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;

    if (!GetParam().make.empty()) { // a TAP device is made by the plug
        EXPECT_THAT(plug(board, 0, GetParam().link), HasSubstr("near: "));
    }
    makeDevices();
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(plug(board, 0, GetParam().link), "") << "also in its own place";
    const FarEnd again(GetParam().farEnd);
    EXPECT_TRUE(again.send(frameOfType(60)));
    EXPECT_EQ(device.receive(0, waitMaxMs), transmission(frameOfType(60), 60));
}

TEST_F(MachineLink, hearsNothingOfItsOwnWhereTheKernelGivesItBack)
{
    run("ip link set lo up");
    const EmulatedBoard board;
    const Device device;
    ASSERT_EQ(plug(board, 0, "interface:lo"), "");
    const FarEnd far("lo");
    device.send(frameOfType(60));
    EXPECT_EQ(far.receive(), frameOfType(60));
    EXPECT_TRUE(far.send(frameOfType(60)));
    EXPECT_EQ(device.receive(0, waitMaxMs), transmission(frameOfType(60), 60)) << "the same, but another's";
    EXPECT_EQ(linkCounters(board).framesIn, 1U);
}

/// Whether that many cameras live; the system shows a thread a little longer than it does.
bool haveCameras(int count)
{
    return eventually([count] {
        int found = 0;
        for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
            std::string name;
            std::ifstream(task.path() / "comm") >> name;
            found += name == "camera" ? 1 : 0;
        }
        return found == count;
    });
}

TEST(CameraLink, standsAtEachPortAndWakesUpWhenThePortIsUsed)
{
    const EmulatedBoard board;
    ASSERT_EQ(board.control().loadSetup(nullptr), 0);
    const Device device;
    std::array<char, 8> text{};
    board.control().link(1, 1, text.data(), text.size());
    EXPECT_STREQ(text.data(), "camera");
    EXPECT_TRUE(haveCameras(0)) << "nobody uses a port";

    using mesk::stack::NetworkNode;
    NetworkNode node(MacAddress(0x02, 0x4B, 0, 0, 0, 1), [&device](const QByteArray& frame) {
        device.send(Bytes(frame.begin(), frame.end()), 1);
    });
    node.setAddress({IpAddress(0xC0A84D01), 24});
    std::optional<MacAddress> owner;
    QByteArray acknowledge;
    node.bind(50000, [&](const auto& datagram, auto) { acknowledge = datagram.data; });
    const auto now = std::chrono::steady_clock::now();
    node.resolve(
        IpAddress(0xC0A84D15), [&](const auto& mac, auto) { owner = mac; }, now);
    node.sendUdp(IpAddress(0xFFFFFFFF), 3956, 50000, QByteArray::fromHex("4211000200000001"),
                 now); // discovery
    for (int frames = 0; frames < 20 && (!owner || acknowledge.isEmpty()); ++frames) {
        QByteArray frame;
        const Words words = device.receive(1, waitMaxMs);
        for (std::size_t i = 1; i < words.size(); ++i)
            frame.append(char(words[i])).append(char(words[i] >> 8));
        node.receive(frame, now);
    }
    EXPECT_EQ(owner, MacAddress(0x02, 0x4B, 0, 1, 0, 1));
    EXPECT_EQ(acknowledge.left(8), QByteArray::fromHex("0000000300f80001"));
    EXPECT_TRUE(acknowledge.contains("EC0001"));
    EXPECT_TRUE(haveCameras(1));
    device.write("GigeTxDisableCrcGeneration1", 1);
    device.send(frameOfType(64), 1); // without a check sequence
    device.write("GigeTxDisableCrcGeneration1", 0);
    device.send(frameOfType(1520), 1);
    EXPECT_TRUE(eventually([&] { return linkCounters(board, 1).framesRefused == 2; }));
    EXPECT_EQ(plug(board, 1, "none"), "");
    EXPECT_TRUE(haveCameras(0));
    EXPECT_THAT(plug(board, 1, "camera:tin=can"), HasSubstr("tin"));
}

INSTANTIATE_TEST_SUITE_P(
    Links, MachineLinks,
    testing::Values(Kind{"interface:near", "far",
                         "ip link add near type veth peer name far && ip link set near up && "
                         "ip link set far up && "},
                    Kind{"tap:tap9", "tap9", ""}),
    [](const auto& kind) { return kind.param.farEnd; });

} // namespace
