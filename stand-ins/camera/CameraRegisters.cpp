#include "stand-ins/camera/CameraRegisters.h"

#include "gvcp/GVCPPacket.h"

#include <algorithm>

namespace emulated_camera {

namespace {

using namespace Register;

constexpr quint32 specVersion = 0x00020000;   // 2.0
constexpr quint32 bigEndianUtf8 = 0x80000001; // device mode: a transmitter
constexpr quint32 linkSpeedMbps = 1000;
constexpr quint32 tickFrequencyHz = 1000000000;
constexpr quint32 heartbeatDefaultMs = 3000, heartbeatLeastMs = 500, heartbeatMostMs = 600000;
constexpr quint32 retriesMost = 16, messageTimeoutMostMs = 60000;
// User name, serial number, heartbeat disable, link speed, application port and address, switchover,
// unconditional action, action, pending acknowledge, event data, event, resend, memory write, several
// registers.
constexpr quint32 gvcpCapability = 0xf830007f;
constexpr quint32 messageSourcePortThere = 0x80000000, streamSourcePortThere = 0x40000000;
constexpr quint32 pixelMono8 = 0x01080001, pixelMono16 = 0x01100007, pixelRgb8 = 0x02180014;
constexpr quint32 sensorWidth = 1024, sensorHeight = 768, sensorLeast = 16;

RegisterField readOnly(quint32 address, quint32 value = 0)
{
    return {address, wordSizeBytes, Access::ReadOnly, value};
}
RegisterField readWrite(quint32 address, quint32 value = 0, quint32 least = 0, quint32 most = 0xffffffff)
{
    return {address, wordSizeBytes, Access::ReadWrite, value, least, most};
}
RegisterField writeOnly(quint32 address, quint32 least = 0, quint32 most = 0xffffffff)
{
    return {address, wordSizeBytes, Access::WriteOnly, 0, least, most};
}
RegisterField text(quint32 address, quint32 sizeBytes)
{
    return {address, sizeBytes, Access::ReadOnly};
}
RegisterField kept(RegisterField field)
{
    field.isKept = true;
    return field;
}
RegisterField locked(RegisterField field, const std::vector<quint32>& choice = {})
{
    field.isLocked = true;
    field.choice = choice;
    return field;
}

std::vector<RegisterField> makeTable()
{
    std::vector<RegisterField> table{
        readOnly(Version, specVersion),
        readOnly(DeviceMode, bigEndianUtf8),
        readOnly(MacHigh),
        readOnly(MacLow),
        readOnly(IpOptions, ipPersistent | ipDhcp | ipLinkLocal),
        kept(readWrite(IpConfiguration, ipLinkLocal)),
        readOnly(CurrentIp),
        readOnly(CurrentMask),
        readOnly(CurrentGateway),
        text(ManufacturerName, 32),
        text(ModelName, 32),
        text(DeviceVersion, 32),
        text(ManufacturerInfo, 48),
        text(SerialNumber, 16),
        kept({UserName, 16, Access::ReadWrite}),
        text(FirstUrl, urlSizeBytes),
        text(SecondUrl, urlSizeBytes),
        readOnly(NetworkInterfaces, 1),
        kept(readWrite(PersistentIp)),
        kept(readWrite(PersistentMask)),
        kept(readWrite(PersistentGateway)),
        readOnly(LinkSpeed, linkSpeedMbps),
        readOnly(MessageChannels, 1),
        readOnly(StreamChannels, 1),
        readOnly(ActionSignals, actionSignalsMax),
        writeOnly(ActionDeviceKey),
        readOnly(ActiveLinks, 1),
        readOnly(StreamCapability, streamSourcePortThere),
        readOnly(MessageCapability, messageSourcePortThere),
        readOnly(GvcpCapability, gvcpCapability),
        readWrite(HeartbeatTimeout, heartbeatDefaultMs, heartbeatLeastMs, heartbeatMostMs),
        readOnly(TickFrequencyHigh),
        readOnly(TickFrequencyLow, tickFrequencyHz),
        writeOnly(TimestampControl, 0, timestampReset | timestampLatch),
        readOnly(TimestampHigh),
        readOnly(TimestampLow),
        readOnly(DiscoveryAckDelay),
        readWrite(GvcpConfiguration),
        readOnly(PendingTimeout),
        readWrite(Register::ControlPrivilege),
        readOnly(PrimaryPort),
        readOnly(PrimaryIp),
        readWrite(MessagePort, 0, 0, 0xffff), // network interface 0 alone
        readWrite(MessageDestination),
        readWrite(MessageTimeout, 0, 0, messageTimeoutMostMs),
        readWrite(MessageRetries, 0, 0, retriesMost),
        readOnly(MessageSourcePort, GVCPPacket::Port),
        readWrite(StreamPort, 0, 0, 0xffff),
        readWrite(StreamPacketSize, 1500),
        readWrite(StreamPacketDelay),
        readWrite(StreamDestination),
        readOnly(StreamSourcePort),
    };
    for (quint32 i = 0; i < actionSignalsMax; ++i) {
        table.push_back(readWrite(ActionGroupKey + i * actionStrideBytes));
        table.push_back(readWrite(ActionGroupMask + i * actionStrideBytes));
    }
    const std::vector<RegisterField> ofThisDevice{
        locked(readWrite(Width, 640, sensorLeast, sensorWidth)),
        locked(readWrite(Height, 480, sensorLeast, sensorHeight)),
        locked(readWrite(PixelFormat, pixelMono8), {pixelMono8, pixelMono16, pixelRgb8}),
        writeOnly(AcquisitionStart),
        writeOnly(AcquisitionStop),
        readOnly(AcquisitionStatus),
        writeOnly(TestEvent, 0, 0x1ffff),
        readWrite(EventLayout, 0, 0, 1),
        readOnly(ActionCount),
        {UserBlock, userBlockSizeBytes, Access::ReadWrite},
    };
    table.insert(table.end(), ofThisDevice.begin(), ofThisDevice.end());
    return table;
}

} // namespace

const std::vector<RegisterField>& registerTable()
{
    static const std::vector<RegisterField> table = makeTable();
    return table;
}

const RegisterField* findRegister(quint32 address)
{
    const std::vector<RegisterField>& table = registerTable();
    const auto behind =
        std::upper_bound(table.begin(), table.end(), address,
                         [](quint32 at, const RegisterField& field) { return at < field.address; });
    if (behind == table.begin() || address - std::prev(behind)->address >= std::prev(behind)->sizeBytes)
        return nullptr;
    return &*std::prev(behind);
}

} // namespace emulated_camera
