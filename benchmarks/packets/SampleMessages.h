#pragma once

#include <QtGlobal>

#include <array>

/// What is built and walked on both sides, the packet classes' and the peer's.
namespace mesk::benchmarks {

using MacBytes = std::array<quint8, 6>;
constexpr MacBytes deviceMac{0x02, 0x4b, 0x00, 0x00, 0x00, 0x02}, hostMac{0x02, 0x4b, 0x00, 0x00, 0x00, 0x01};
constexpr quint32 deviceIp = 0xc0a84d02, hostIp = 0xc0a84d01, subnetMask = 0xffffff00; // host byte order
constexpr quint16 hostPort = 50000;
constexpr quint16 requestId = 7;

/// Of an acknowledge of a read register command.
constexpr quint32 registerValue = 0x12345678;

/// Fields of a device information block that aren't addresses.
constexpr quint16 versionMajor = 2, versionMinor = 1;
constexpr quint32 deviceMode = 0x80000001, ipConfigOptions = 7, ipConfigCurrent = 5;
constexpr const char *manufacturerName = "Sample Optics", *modelName = "SO-2040-GE", *deviceVersion = "3.1.0",
                     *manufacturerInfo = "Area scan camera of a test bench", *serialNumber = "0012345678",
                     *userName = "line 2, left";

constexpr quint32 transactionId = 0x3903f326;
struct SampleOption {
    quint8 code;
    quint8 size;
    std::array<quint8, 8> value;
};
/// Of a DHCP acknowledge, in the order in which they are sent: 50 bytes with the end code, so that a frame
/// without the zeros behind them has 332 bytes.
constexpr std::array<SampleOption, 8> dhcpOptions{{{53, 1, {5}},
                                                   {1, 4, {255, 255, 255, 0}},
                                                   {3, 4, {192, 168, 77, 1}},
                                                   {6, 8, {192, 168, 77, 1, 192, 168, 77, 3}},
                                                   {51, 4, {0, 0, 14, 16}},
                                                   {54, 4, {192, 168, 77, 1}},
                                                   {58, 4, {0, 0, 7, 8}},
                                                   {59, 4, {0, 0, 12, 78}}}};
constexpr int dhcpFrameBytes = 590, dhcpFrameBytesWithoutZeros = 332;

} // namespace mesk::benchmarks
