#include "gvcp/GVCPDiscoveryAckPacket.h"

#include "gvcp/GVCPMessageCode.h"
#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"

#include <algorithm>
#include <array>

namespace {
constexpr int versionMajorAt = 0, versionMinorAt = versionMajorAt + 2, deviceModeAt = versionMinorAt + 2,
              macAddressAt = deviceModeAt + 4 + 2, configOptionsAt = macAddressAt + MacAddress::sizeBytes,
              configCurrentAt = configOptionsAt + 4, currentIpAt = configCurrentAt + 4 + 12,
              subnetMaskAt = currentIpAt + 4 + 12, defaultGatewayAt = subnetMaskAt + 4 + 12,
              textsAt = defaultGatewayAt + 4;
static_assert(textsAt == 72, "GigE Vision: texts of a discovery acknowledge");

struct DeviceFields {
    quint16 specVersionMajor = 0;
    quint16 specVersionMinor = 0;
    quint32 deviceMode = 0;
    MacAddress macAddress;
    quint32 ipConfigOptions = 0;
    quint32 ipConfigCurrent = 0;
    IpAddress currentIp;
    quint32 subnetMask = 0;
    IpAddress defaultGateway;
    QByteArray manufacturerName;
    QByteArray modelName;
    QByteArray deviceVersion;
    QByteArray manufacturerInfo;
    QByteArray serialNumber;
    QByteArray userName;
};

struct TextField {
    QByteArray DeviceFields::*text;
    int width;
};

// In the order of the block, without gaps.
constexpr std::array<TextField, 6> textFields{{{&DeviceFields::manufacturerName, 32},
                                               {&DeviceFields::modelName, 32},
                                               {&DeviceFields::deviceVersion, 32},
                                               {&DeviceFields::manufacturerInfo, 48},
                                               {&DeviceFields::serialNumber, 16},
                                               {&DeviceFields::userName, 16}}};

template <typename T>
T readNumber(const ByteSlice& block, int at, ByteOrder byteOrder)
{
    const auto value = readField<T>(block, at);
    return byteOrder == NetworkOrder ? value : qToBigEndian(value);
}

// Of the field from begin to end: what stands in front of the zeros that fill it up. With anything else
// behind its first zero it is no text filled up with zeros, and then the field itself.
QByteArray readText(const char* begin, const char* end)
{
    const char* const zero = std::find(begin, end, '\0');
    const bool isClean = std::all_of(zero, end, [](char each) { return each == '\0'; });
    return QByteArray(begin, int((isClean ? zero : end) - begin));
}

void readBlock(DeviceFields& fields, const ByteSlice& block, ByteOrder byteOrder)
{
    fields.specVersionMajor = readNumber<quint16>(block, versionMajorAt, byteOrder);
    fields.specVersionMinor = readNumber<quint16>(block, versionMinorAt, byteOrder);
    fields.deviceMode = readNumber<quint32>(block, deviceModeAt, byteOrder);
    fields.macAddress = readMacAddress(block, macAddressAt);
    fields.ipConfigOptions = readNumber<quint32>(block, configOptionsAt, byteOrder);
    fields.ipConfigCurrent = readNumber<quint32>(block, configCurrentAt, byteOrder);
    fields.currentIp = IpAddress(readNumber<quint32>(block, currentIpAt, byteOrder));
    fields.subnetMask = readNumber<quint32>(block, subnetMaskAt, byteOrder);
    fields.defaultGateway = IpAddress(readNumber<quint32>(block, defaultGatewayAt, byteOrder));
    int at = textsAt;
    for (const TextField& each : textFields) {
        const char* const bytes = block.constData();
        const int end = std::min(at + each.width, block.size());
        fields.*each.text = at < end ? readText(bytes + at, bytes + end) : QByteArray();
        at += each.width;
    }
}

// To zeros. Not inlined: GCC 12 would take the array for Qt's empty one and warn of writes behind it.
[[gnu::noinline]] void writeBlock(const DeviceFields& fields, char* to)
{
    qToBigEndian(fields.specVersionMajor, to + versionMajorAt);
    qToBigEndian(fields.specVersionMinor, to + versionMinorAt);
    qToBigEndian(fields.deviceMode, to + deviceModeAt);
    std::memcpy(to + macAddressAt, fields.macAddress.constData(), MacAddress::sizeBytes);
    qToBigEndian(fields.ipConfigOptions, to + configOptionsAt);
    qToBigEndian(fields.ipConfigCurrent, to + configCurrentAt);
    qToBigEndian(fields.currentIp.toUInt32(), to + currentIpAt);
    qToBigEndian(fields.subnetMask, to + subnetMaskAt);
    qToBigEndian(fields.defaultGateway.toUInt32(), to + defaultGatewayAt);
    to += textsAt;
    for (const TextField& each : textFields) {
        const QByteArray& text = fields.*each.text;
        std::copy_n(text.begin(), std::min(text.size(), each.width - 1), to);
        to += each.width;
    }
}
} // namespace

struct GVCPDiscoveryAckPacket::D {
    /// The fields, once whatever was received is read.
    DeviceFields& fields()
    {
        if (unread.size() > 0) {
            readBlock(read, unread, NetworkOrder);
            unread = ByteSlice();
        }
        return read;
    }

    DeviceFields read;
    ByteSlice unread; // a received block, as long as no field of it was asked for
};

GVCPDiscoveryAckPacket::GVCPDiscoveryAckPacket(quint16 status, quint16 ackId)
    : GVCPAckPacket(status, GVCPMessageCode::DiscoveryAck, ackId, {}, NetworkOrder)
{
}

GVCPDiscoveryAckPacket::GVCPDiscoveryAckPacket(const QByteArray& bytes)
    : GVCPDiscoveryAckPacket(ByteSlice(bytes))
{
}

GVCPDiscoveryAckPacket::GVCPDiscoveryAckPacket(ByteSlice bytes)
    : GVCPAckPacket(bytes)
{
    ByteSlice block = std::move(bytes).mid(int(HeaderSize));
    // The rule of isPayloadValid(): no text is held yet.
    if (block.size() <= payloadSizeMaxBytes)
        d->unread = std::move(block);
}

GVCPDiscoveryAckPacket::~GVCPDiscoveryAckPacket() = default;

quint32 GVCPDiscoveryAckPacket::payloadSize() const
{
    return blockSizeBytes;
}

QByteArray GVCPDiscoveryAckPacket::serialize() const
{
    return header() + payload();
}

QByteArray GVCPDiscoveryAckPacket::payload() const
{
    QByteArray block(int(blockSizeBytes), '\0');
    writeBlock(d->fields(), block.data());
    return block;
}

bool GVCPDiscoveryAckPacket::isPayloadValid(const QByteArray& bytes) const
{
    const DeviceFields& fields = d->fields();
    return GVCPAckPacket::isPayloadValid(bytes) &&
           std::all_of(textFields.begin(), textFields.end(), [&fields](const TextField& each) {
               return (fields.*each.text).size() <= textSizeMaxBytes;
           });
}

void GVCPDiscoveryAckPacket::parse(const QByteArray& block, ByteOrder byteOrder)
{
    if (isPayloadValid(block))
        readBlock(d->fields(), ByteSlice(block), byteOrder);
}

quint16 GVCPDiscoveryAckPacket::specVersionMajor() const
{
    return d->fields().specVersionMajor;
}

void GVCPDiscoveryAckPacket::setSpecVersionMajor(quint16 version)
{
    d->fields().specVersionMajor = version;
}

quint16 GVCPDiscoveryAckPacket::specVersionMinor() const
{
    return d->fields().specVersionMinor;
}

void GVCPDiscoveryAckPacket::setSpecVersionMinor(quint16 version)
{
    d->fields().specVersionMinor = version;
}

quint32 GVCPDiscoveryAckPacket::deviceMode() const
{
    return d->fields().deviceMode;
}

void GVCPDiscoveryAckPacket::setDeviceMode(quint32 mode)
{
    d->fields().deviceMode = mode;
}

MacAddress GVCPDiscoveryAckPacket::macAddress() const
{
    return d->fields().macAddress;
}

void GVCPDiscoveryAckPacket::setMacAddress(MacAddress address)
{
    d->fields().macAddress = address;
}

quint32 GVCPDiscoveryAckPacket::ipConfigOptions() const
{
    return d->fields().ipConfigOptions;
}

void GVCPDiscoveryAckPacket::setIpConfigOptions(quint32 options)
{
    d->fields().ipConfigOptions = options;
}

quint32 GVCPDiscoveryAckPacket::ipConfigCurrent() const
{
    return d->fields().ipConfigCurrent;
}

void GVCPDiscoveryAckPacket::setIpConfigCurrent(quint32 options)
{
    d->fields().ipConfigCurrent = options;
}

IpAddress GVCPDiscoveryAckPacket::currentIp() const
{
    return d->fields().currentIp;
}

void GVCPDiscoveryAckPacket::setCurrentIp(IpAddress address)
{
    d->fields().currentIp = address;
}

quint32 GVCPDiscoveryAckPacket::subnetMask() const
{
    return d->fields().subnetMask;
}

void GVCPDiscoveryAckPacket::setSubnetMask(quint32 mask)
{
    d->fields().subnetMask = mask;
}

IpAddress GVCPDiscoveryAckPacket::defaultGateway() const
{
    return d->fields().defaultGateway;
}

void GVCPDiscoveryAckPacket::setDefaultGateway(IpAddress address)
{
    d->fields().defaultGateway = address;
}

QByteArray GVCPDiscoveryAckPacket::manufacturerName() const
{
    return d->fields().manufacturerName;
}

void GVCPDiscoveryAckPacket::setManufacturerName(const QByteArray& text)
{
    d->fields().manufacturerName = text;
}

QByteArray GVCPDiscoveryAckPacket::modelName() const
{
    return d->fields().modelName;
}

void GVCPDiscoveryAckPacket::setModelName(const QByteArray& text)
{
    d->fields().modelName = text;
}

QByteArray GVCPDiscoveryAckPacket::deviceVersion() const
{
    return d->fields().deviceVersion;
}

void GVCPDiscoveryAckPacket::setDeviceVersion(const QByteArray& text)
{
    d->fields().deviceVersion = text;
}

QByteArray GVCPDiscoveryAckPacket::manufacturerInfo() const
{
    return d->fields().manufacturerInfo;
}

void GVCPDiscoveryAckPacket::setManufacturerInfo(const QByteArray& text)
{
    d->fields().manufacturerInfo = text;
}

QByteArray GVCPDiscoveryAckPacket::serialNumber() const
{
    return d->fields().serialNumber;
}

void GVCPDiscoveryAckPacket::setSerialNumber(const QByteArray& text)
{
    d->fields().serialNumber = text;
}

QByteArray GVCPDiscoveryAckPacket::userName() const
{
    return d->fields().userName;
}

void GVCPDiscoveryAckPacket::setUserName(const QByteArray& text)
{
    d->fields().userName = text;
}
