#pragma once

#include <QtGlobal>

#include <vector>

namespace emulated_camera {

/// Addresses of the registers: the bootstrap registers of GigE Vision, and from 0xA000 on those of this
/// device.
namespace Register {
enum : quint32 {
    Version = 0x0000,
    DeviceMode = 0x0004,
    MacHigh = 0x0008,
    MacLow = 0x000c,
    IpOptions = 0x0010,
    IpConfiguration = 0x0014,
    CurrentIp = 0x0024,
    CurrentMask = 0x0034,
    CurrentGateway = 0x0044,
    ManufacturerName = 0x0048,
    ModelName = 0x0068,
    DeviceVersion = 0x0088,
    ManufacturerInfo = 0x00a8,
    SerialNumber = 0x00d8,
    UserName = 0x00e8,
    FirstUrl = 0x0200,
    SecondUrl = 0x0400,
    NetworkInterfaces = 0x0600,
    PersistentIp = 0x064c,
    PersistentMask = 0x065c,
    PersistentGateway = 0x066c,
    LinkSpeed = 0x0670,
    MessageChannels = 0x0900,
    StreamChannels = 0x0904,
    ActionSignals = 0x0908,
    ActionDeviceKey = 0x090c,
    ActiveLinks = 0x0910,
    StreamCapability = 0x092c,
    MessageCapability = 0x0930,
    GvcpCapability = 0x0934,
    HeartbeatTimeout = 0x0938,
    TickFrequencyHigh = 0x093c,
    TickFrequencyLow = 0x0940,
    TimestampControl = 0x0944,
    TimestampHigh = 0x0948,
    TimestampLow = 0x094c,
    DiscoveryAckDelay = 0x0950,
    GvcpConfiguration = 0x0954,
    PendingTimeout = 0x0958,
    ControlPrivilege = 0x0a00,
    PrimaryPort = 0x0a04,
    PrimaryIp = 0x0a14,
    MessagePort = 0x0b00,
    MessageDestination = 0x0b10,
    MessageTimeout = 0x0b14,
    MessageRetries = 0x0b18,
    MessageSourcePort = 0x0b1c,
    StreamPort = 0x0d00,
    StreamPacketSize = 0x0d04,
    StreamPacketDelay = 0x0d08,
    StreamDestination = 0x0d18,
    StreamSourcePort = 0x0d1c,
    ActionGroupKey = 0x9800, ///< of signal 0; that of signal i is actionStrideBytes * i further
    ActionGroupMask = 0x9804,

    Width = 0xa000,
    Height = 0xa004,
    PixelFormat = 0xa008,
    AcquisitionStart = 0xa010,
    AcquisitionStop = 0xa014,
    AcquisitionStatus = 0xa018,
    TestEvent = 0xa020,
    EventLayout = 0xa024,
    ActionCount = 0xa028,
    UserBlock = 0xb000,
    Description = 0x10000,
};
} // namespace Register

constexpr quint32 wordSizeBytes = 4;
constexpr quint32 actionSignalsMax = 4;
constexpr quint32 actionStrideBytes = 16;
constexpr quint32 urlSizeBytes = 512;
constexpr quint32 userBlockSizeBytes = 256;

/// Bits of IpOptions and IpConfiguration.
constexpr quint32 ipPersistent = 0x1, ipDhcp = 0x2, ipLinkLocal = 0x4;
/// Bits of TimestampControl.
constexpr quint32 timestampReset = 0x1, timestampLatch = 0x2;
/// Bit of GvcpConfiguration.
constexpr quint32 heartbeatDisabled = 0x1;
/// Bit of TestEvent above the event id: with data, which are the first words of the user block.
constexpr quint32 testEventWithData = 0x10000, testEventDataSizeBytes = 16;

enum class Access { ReadOnly, ReadWrite, WriteOnly };

/// One register, or a run of words of the same kind.
struct RegisterField {
    quint32 address;
    quint32 sizeBytes;
    Access access;
    quint32 initial = 0; ///< of a single word
    quint32 least = 0;
    quint32 most = 0xffffffff;
    std::vector<quint32> choice{}; ///< the values that it takes; empty: all from least to most
    bool isKept = false;           ///< keeps its value without power
    bool isLocked = false;         ///< not to be written while the device acquires
};

/// All of them, in the order of their addresses. Words between them are reserved.
const std::vector<RegisterField>& registerTable();

/// The field that the word at @p address is in; null for a reserved one.
const RegisterField* findRegister(quint32 address);

} // namespace emulated_camera
