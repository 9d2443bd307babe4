#include "host/CaptureReader.h"
#include "host/Table.h"
#include "host/describe/FramePrinter.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <ostream>
#include <utility>

using namespace mesk::host;
using nlohmann::json;

namespace {

/// A frame of a recorded session: 1 is a discovery command of 50 bytes, 4 its acknowledge.
CapturedFrame sampleFrame(std::uint64_t number)
{
    CaptureReader reader(MESK_SAMPLE);
    CapturedFrame frame;
    while (frame.number < number && reader.next(frame.bytes, &frame.stamp)) {
        ++frame.number;
    }
    return frame;
}

json dumped(const CapturedFrame& frame)
{
    fmt::memory_buffer buffer;
    JsonFramePrinter(buffer, true).print(frame);
    return json::parse(buffer.begin(), buffer.end());
}

/// The discovery command with other bytes at some places, and what that makes of it.
struct Change {
    const char* name;
    std::vector<std::pair<int, const char*>> bytes;
    int size;
    const char* lastClass;
    const char* lastReason;  ///< why the last layer isn't valid
    const char* frameReason; ///< why there is no further one
    const char* checksum;    ///< the innermost one
};
void PrintTo(const Change& change, std::ostream* out)
{
    *out << change.name;
}

class DumpOfAChange : public testing::TestWithParam<Change> {};

TEST_P(DumpOfAChange, namesTheLastLayerAndEveryReason)
{
    const Change& change = GetParam();
    CapturedFrame frame = sampleFrame(1);
    ASSERT_EQ(frame.bytes.size(), 50);
    for (const auto& [at, hex] : change.bytes) {
        const QByteArray bytes = QByteArray::fromHex(hex);
        frame.bytes.replace(at, bytes.size(), bytes);
    }
    frame.bytes.truncate(change.size);
    const json result = dumped(frame);
    const json& last = result.at("layers").back();
    EXPECT_EQ(last.at("class"), change.lastClass);
    EXPECT_EQ(last.value("reason", ""), change.lastReason);
    EXPECT_EQ(result.value("reason", ""), change.frameReason);
    const json sums = result.value("checksums", json::object());
    EXPECT_EQ(sums.value("udp", sums.value("icmp", sums.value("ipv4", ""))), change.checksum);
}

constexpr const char* command = "GVCPCommandPacket";
constexpr const char* ethernet = "EthernetFrame";
constexpr const char* ip = "IPv4Packet";
constexpr const char* udp = "UdpPacket";
constexpr const char* dhcp = "DhcpPacket";
constexpr const char* noIp = "19 bytes are there, a header has at least 20";
constexpr const char* noLength = "length field 0, the header alone has 8";
constexpr const char* noDhcp = "8 bytes are there, a message has at least 240";
constexpr const char* wrongOp = "op 66, neither 1 nor 2";
constexpr const char* noPorts = "UDP ports 7 and 7 have no class";
constexpr const char* cut = "cut short";
constexpr const char* noProtocol = "IP protocol 6 has no class";
constexpr const char* noGvcp = "0 bytes are there, GVCP needs 8";

const Change changes[] = {
    {"none", {}, 50, command, "", "", "good"},
    {"noHeader", {}, 13, ethernet, "13 bytes are there, a header needs 14", "", ""},
    {"noTag", {{12, "8100"}}, 17, ethernet, "17 bytes are there, a tagged header needs 18", "", ""},
    {"otherType", {{12, "86dd"}}, 50, ethernet, "", "EtherType 0x86dd has no class", ""},
    {"noArp", {{12, "0806"}}, 50, "ArpPacket", "hardware type 17664, not 1", "", ""},
    {"cutArp", {{12, "0806"}}, 41, "ArpPacket", "27 bytes are there, a message has 28", "", ""},
    {"otherProtocol", {{23, "06"}}, 50, ip, "", noProtocol, "bad"},
    {"version6", {{14, "65"}, {23, "06"}}, 50, ip, "version 6, not 4", noProtocol, "bad"},
    {"tinyIp", {{14, "44"}, {23, "06"}}, 50, ip, "header size 16, at least 20", noProtocol, "bad"},
    {"noIp", {{23, "06"}}, 33, ip, noIp, noProtocol, cut},
    {"cutIp", {{23, "06"}}, 49, ip, "total length 36, 35 bytes are there", noProtocol, "bad"},
    {"ping", {{23, "01"}, {34, "0800b5fc00000000"}}, 50, "IcmpPacket", "", "", "good"},
    {"badPing", {{23, "01"}, {34, "0800b5fd00000000"}}, 50, "IcmpPacket", "", "", "bad"},
    {"noUdp", {}, 41, udp, "7 bytes are there, a header has 8", noGvcp, cut},
    // A sum over no bytes would be right.
    {"noLength", {{26, "ffee0000"}, {34, "000700070000dead"}}, 50, udp, noLength, noPorts, "bad"},
    {"cutUdp", {}, 42, udp, "length field 16, 8 bytes are there", noGvcp, cut},
    {"fragment", {{20, "0001"}}, 50, command, "", "fragment from byte 8 on, without a header", cut},
    {"noSum", {{40, "0000"}}, 50, command, "", "", "absent"},
    {"badSum", {{43, "00"}}, 50, command, "", "", "bad"},
    {"padded", {{50, "0000"}}, 52, command, "", "", "good"},
    {"otherPorts", {{36, "0007"}}, 50, udp, "", "UDP ports 54914 and 7 have no class", "bad"},
    {"noDhcp", {{34, "00440043"}}, 50, dhcp, noDhcp, "", "bad"},
    {"wrongOp", {{16, "010c"}, {34, "0044004300f80000"}, {281, "00"}}, 282, dhcp, wrongOp, "", "absent"},
    {"wrongKey", {{42, "43"}}, 50, command, "key byte 0x43, not 0x42", "", "bad"},
    {"wrongLength", {{46, "0001"}}, 50, command, "length field 1, 0 bytes follow the header", "", "bad"},
    {"noId", {{48, "0000"}}, 50, command, "request id 0", "", "good"}, // ones' complement: 0 is ffff
    {"readMemory", {{44, "0084"}}, 50, "GVCPMemoryReadCommandPacket", "", "", "bad"},
    {"action", {{44, "0100"}}, 50, "GVCPActionCommandPacket", "", "", "bad"},
    {"unknownCommand", {{44, "7777"}}, 50, command, "", "GVCP code 0x7777 has no class", "bad"},
    {"pending",
     {{34, "0f74d682"}, {44, "0089"}},
     50,
     "GVCPAckPacket",
     "",
     "GVCP code 0x0089 has no class",
     "bad"},
};

INSTANTIATE_TEST_SUITE_P(Changes, DumpOfAChange, testing::ValuesIn(changes),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(Dump, givesEveryGetterItsOwnNameAndEscapesTexts)
{
    CapturedFrame frame = sampleFrame(4);
    constexpr int manufacturerAt = 14 + 20 + 8 + 8 + 72;
    frame.bytes.replace(manufacturerAt, 6, "A\"\\\n\xff\x01");
    const json result = dumped(frame);
    EXPECT_EQ(result.at("time"), "1795526838.994370000");
    const json& block = result.at("layers").at(3);
    EXPECT_EQ(block.at("class"), "GVCPDiscoveryAckPacket");
    EXPECT_EQ(block.at("manufacturerName"), "A\"\\\n\uFFFD\x01");
    EXPECT_EQ(block.at("modelName"), "Fake");
    EXPECT_EQ(block.at("currentIp"), "10.77.1.20");
    EXPECT_EQ(block.at("acknowledge"), 3);
    EXPECT_EQ(block.at("header"), "0000000300f8ffff");
    EXPECT_EQ(result.at("layers").at(2).at("checksum"), 0xfbcc);
}

TEST(Dump, showsPeopleALineAndATree)
{
    fmt::memory_buffer buffer;
    TextFramePrinter printer(buffer, true, true);
    printer.print(sampleFrame(1));
    const std::string text = fmt::to_string(buffer);
    EXPECT_THAT(text, testing::StartsWith(
                          "      1       0.000000     50  10.77.1.1:54914        255.255.255.255:3956   "
                          "GVCP      discovery command id 65535 [ipv4 good, udp good]\n    EthernetFrame\n"));
    EXPECT_THAT(text,
                testing::EndsWith("        command: 0x0002\n        flags: 0x01\n        requestId: 65535\n"
                                  "        payloadLength: 0\n        payload: 0 bytes\n"));

    CapturedFrame broken = sampleFrame(1);
    broken.bytes.replace(14, 1, "\x65").replace(39, 1, QByteArray(1, '\0'));
    printer.print(broken);
    EXPECT_THAT(fmt::to_string(buffer),
                testing::HasSubstr("id 65535 (IPv4: version 6, not 4) (UDP: length field 0, the header alone "
                                   "has 8) [ipv4 bad, udp bad]\n"));
    printer.print(sampleFrame(75));
    EXPECT_THAT(fmt::to_string(buffer), testing::HasSubstr("\n        addresses\n          - address: 0x"));
}

TEST(Table, hasNothingThatATerminalObeysAndNoDigitTooMany)
{
    EXPECT_EQ(printable("\xc3\xbc\xf0\x9f\x93\xb7 \x1b\x7f\xc2\x9b\x9b\xff."),
              "\xc3\xbc\xf0\x9f\x93\xb7 ?????.");
    const Json record = {{"seconds", 0.339587}};
    EXPECT_EQ(Table(record).row(record), "0.339587");
}

} // namespace
