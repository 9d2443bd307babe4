#include "gvcp/GVCPDiscoveryAckPacket.h"

#include "gvcp/GVCPMessageCode.h"
#include "gvcp/GVCPPacket_p.h"
#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"

#include <QtAlgorithms>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <type_traits>
#include <utility>

namespace {
constexpr int versionMajorAt = 0, versionMinorAt = versionMajorAt + 2, deviceModeAt = versionMinorAt + 2,
              macAddressAt = deviceModeAt + 4 + 2, configOptionsAt = macAddressAt + MacAddress::sizeBytes,
              configCurrentAt = configOptionsAt + 4, currentIpAt = configCurrentAt + 4 + 12,
              subnetMaskAt = currentIpAt + 4 + 12, defaultGatewayAt = subnetMaskAt + 4 + 12,
              manufacturerNameAt = defaultGatewayAt + 4, modelNameAt = manufacturerNameAt + 32,
              deviceVersionAt = modelNameAt + 32, manufacturerInfoAt = deviceVersionAt + 32,
              serialNumberAt = manufacturerInfoAt + 48, userNameAt = serialNumberAt + 16;
static_assert(userNameAt + 16 == int(GVCPDiscoveryAckPacket::blockSizeBytes), "GigE Vision: 248 bytes");

enum TextIndex { ManufacturerName, ModelName, DeviceVersion, ManufacturerInfo, SerialNumber, UserName };
struct TextPlace {
    int at;
    int width;
};
// By index.
constexpr std::array<TextPlace, 6> textPlaces{{{manufacturerNameAt, 32},
                                               {modelNameAt, 32},
                                               {deviceVersionAt, 32},
                                               {manufacturerInfoAt, 48},
                                               {serialNumberAt, 16},
                                               {userNameAt, 16}}};

struct DeviceFields {
    quint16 specVersionMajor = 0;
    quint16 specVersionMinor = 0;
    quint32 deviceMode = 0;
    MacAddress macAddress;
    quint32 ipConfigOptions = 0;
    quint32 ipConfigCurrent = 0;
    quint32 currentIp = 0;
    quint32 subnetMask = 0;
    quint32 defaultGateway = 0;
    std::array<QByteArray, textPlaces.size()> texts;
};

constexpr int wordBytes = sizeof(quint64);

// The bytes of a field from a place on as a number, the first in its lowest bits; zeros behind the field.
quint64 wordAt(const char* field, int width, int at)
{
    quint64 word = 0;
    if (width - at >= wordBytes)
        std::memcpy(&word, field + at, wordBytes);
    else
        std::memcpy(&word, field + at, std::size_t(width - at));
    return qFromLittleEndian(word);
}

// What stands in front of the zeros that fill up the field, a word at a time. With anything else behind its
// first zero it is no text filled up with zeros, and then the whole field counts.
int textLength(const char* field, int width)
{
    constexpr quint64 ones = 0x0101010101010101, highBits = 0x8080808080808080;
    for (int at = 0; at < width; at += wordBytes) {
        const quint64 word = wordAt(field, width, at);
        // A high bit for each zero byte, and for some behind the first.
        const quint64 zeroBytes = (word - ones) & ~word & highBits;
        if (zeroBytes == 0)
            continue;
        const int before = int(qCountTrailingZeroBits(zeroBytes)) / 8;
        quint64 behind = word >> (8 * before);
        for (int next = at + wordBytes; next < width; next += wordBytes)
            behind |= wordAt(field, width, next);
        return behind == 0 ? at + before : width;
    }
    return width;
}

QByteArray readText(const ByteSlice& block, const TextPlace& place)
{
    const int width = std::min(place.width, block.size() - place.at);
    if (width <= 0)
        return {};
    const char* const text = block.constData() + place.at;
    return QByteArray(text, textLength(text, width));
}

void readBlock(DeviceFields& fields, const ByteSlice& block, ByteOrder byteOrder)
{
    const auto read = [&block, byteOrder](auto& number, int at) {
        const auto value = readField<std::remove_reference_t<decltype(number)>>(block, at);
        number = byteOrder == NetworkOrder ? value : qToBigEndian(value);
    };
    read(fields.specVersionMajor, versionMajorAt);
    read(fields.specVersionMinor, versionMinorAt);
    read(fields.deviceMode, deviceModeAt);
    fields.macAddress = readMacAddress(block, macAddressAt);
    read(fields.ipConfigOptions, configOptionsAt);
    read(fields.ipConfigCurrent, configCurrentAt);
    read(fields.currentIp, currentIpAt);
    read(fields.subnetMask, subnetMaskAt);
    read(fields.defaultGateway, defaultGatewayAt);
    for (std::size_t index = 0; index < textPlaces.size(); ++index)
        fields.texts[index] = readText(block, textPlaces[index]);
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
    qToBigEndian(fields.currentIp, to + currentIpAt);
    qToBigEndian(fields.subnetMask, to + subnetMaskAt);
    qToBigEndian(fields.defaultGateway, to + defaultGatewayAt);
    for (std::size_t index = 0; index < textPlaces.size(); ++index) {
        const auto [at, width] = textPlaces[index];
        const QByteArray& text = fields.texts[index];
        std::copy_n(text.begin(), std::min(text.size(), width - 1), to + at);
    }
}
} // namespace

struct GVCPDiscoveryAckPacket::D {
    ByteSlice received;              // a block, where the fields are read
    std::optional<DeviceFields> own; // in their place, once they are changed or written

    DeviceFields& fields()
    {
        if (!own) {
            readBlock(own.emplace(), received, NetworkOrder);
            received = ByteSlice();
        }
        return *own;
    }
    template <typename Number>
    Number number(Number DeviceFields::*field, int at) const
    {
        return own ? (*own).*field : readField<Number>(received, at);
    }
    QByteArray text(std::size_t index) const
    {
        return own ? own->texts[index] : readText(received, textPlaces[index]);
    }
};

GVCPDiscoveryAckPacket::GVCPDiscoveryAckPacket(quint16 status, quint16 ackId)
    : GVCPAckPacket(status, GVCPMessageCode::DiscoveryAck, ackId, {}, NetworkOrder)
{
    d->own.emplace();
}

GVCPDiscoveryAckPacket::GVCPDiscoveryAckPacket(const QByteArray& bytes)
    : GVCPDiscoveryAckPacket(ByteSlice(bytes))
{
}

GVCPDiscoveryAckPacket::GVCPDiscoveryAckPacket(ByteSlice&& bytes)
    : GVCPAckPacket(ByteSlice(bytes))
{
    bytes.narrow(int(HeaderSize));
    // The rule of isPayloadValid(): no text is held yet.
    if (bytes.size() <= payloadSizeMaxBytes)
        d->received = std::move(bytes);
}

GVCPDiscoveryAckPacket::~GVCPDiscoveryAckPacket() = default;

quint32 GVCPDiscoveryAckPacket::payloadSize() const
{
    return blockSizeBytes;
}

QByteArray GVCPDiscoveryAckPacket::serialize() const
{
    QByteArray message(int(HeaderSize + blockSizeBytes), '\0');
    GVCPPacket::d->writeHeader(message.data(), status(), quint16(payloadSize()));
    writeBlock(d->fields(), message.data() + HeaderSize);
    return message;
}

QByteArray GVCPDiscoveryAckPacket::payload() const
{
    QByteArray block(int(blockSizeBytes), '\0');
    writeBlock(d->fields(), block.data());
    return block;
}

bool GVCPDiscoveryAckPacket::isPayloadValid(const QByteArray& bytes) const
{
    const auto& texts = d->fields().texts;
    return GVCPAckPacket::isPayloadValid(bytes) &&
           std::all_of(texts.begin(), texts.end(),
                       [](const QByteArray& each) { return each.size() <= textSizeMaxBytes; });
}

void GVCPDiscoveryAckPacket::parse(const QByteArray& block, ByteOrder byteOrder)
{
    if (isPayloadValid(block))
        readBlock(d->fields(), ByteSlice(block), byteOrder);
}

quint16 GVCPDiscoveryAckPacket::specVersionMajor() const
{
    return d->number(&DeviceFields::specVersionMajor, versionMajorAt);
}

void GVCPDiscoveryAckPacket::setSpecVersionMajor(quint16 version)
{
    d->fields().specVersionMajor = version;
}

quint16 GVCPDiscoveryAckPacket::specVersionMinor() const
{
    return d->number(&DeviceFields::specVersionMinor, versionMinorAt);
}

void GVCPDiscoveryAckPacket::setSpecVersionMinor(quint16 version)
{
    d->fields().specVersionMinor = version;
}

quint32 GVCPDiscoveryAckPacket::deviceMode() const
{
    return d->number(&DeviceFields::deviceMode, deviceModeAt);
}

void GVCPDiscoveryAckPacket::setDeviceMode(quint32 mode)
{
    d->fields().deviceMode = mode;
}

MacAddress GVCPDiscoveryAckPacket::macAddress() const
{
    return d->own ? d->own->macAddress : readMacAddress(d->received, macAddressAt);
}

void GVCPDiscoveryAckPacket::setMacAddress(MacAddress address)
{
    d->fields().macAddress = address;
}

quint32 GVCPDiscoveryAckPacket::ipConfigOptions() const
{
    return d->number(&DeviceFields::ipConfigOptions, configOptionsAt);
}

void GVCPDiscoveryAckPacket::setIpConfigOptions(quint32 options)
{
    d->fields().ipConfigOptions = options;
}

quint32 GVCPDiscoveryAckPacket::ipConfigCurrent() const
{
    return d->number(&DeviceFields::ipConfigCurrent, configCurrentAt);
}

void GVCPDiscoveryAckPacket::setIpConfigCurrent(quint32 options)
{
    d->fields().ipConfigCurrent = options;
}

IpAddress GVCPDiscoveryAckPacket::currentIp() const
{
    return IpAddress(d->number(&DeviceFields::currentIp, currentIpAt));
}

void GVCPDiscoveryAckPacket::setCurrentIp(IpAddress address)
{
    d->fields().currentIp = address.toUInt32();
}

quint32 GVCPDiscoveryAckPacket::subnetMask() const
{
    return d->number(&DeviceFields::subnetMask, subnetMaskAt);
}

void GVCPDiscoveryAckPacket::setSubnetMask(quint32 mask)
{
    d->fields().subnetMask = mask;
}

IpAddress GVCPDiscoveryAckPacket::defaultGateway() const
{
    return IpAddress(d->number(&DeviceFields::defaultGateway, defaultGatewayAt));
}

void GVCPDiscoveryAckPacket::setDefaultGateway(IpAddress address)
{
    d->fields().defaultGateway = address.toUInt32();
}

QByteArray GVCPDiscoveryAckPacket::manufacturerName() const
{
    return d->text(ManufacturerName);
}

void GVCPDiscoveryAckPacket::setManufacturerName(const QByteArray& text)
{
    d->fields().texts[ManufacturerName] = text;
}

QByteArray GVCPDiscoveryAckPacket::modelName() const
{
    return d->text(ModelName);
}

void GVCPDiscoveryAckPacket::setModelName(const QByteArray& text)
{
    d->fields().texts[ModelName] = text;
}

QByteArray GVCPDiscoveryAckPacket::deviceVersion() const
{
    return d->text(DeviceVersion);
}

void GVCPDiscoveryAckPacket::setDeviceVersion(const QByteArray& text)
{
    d->fields().texts[DeviceVersion] = text;
}

QByteArray GVCPDiscoveryAckPacket::manufacturerInfo() const
{
    return d->text(ManufacturerInfo);
}

void GVCPDiscoveryAckPacket::setManufacturerInfo(const QByteArray& text)
{
    d->fields().texts[ManufacturerInfo] = text;
}

QByteArray GVCPDiscoveryAckPacket::serialNumber() const
{
    return d->text(SerialNumber);
}

void GVCPDiscoveryAckPacket::setSerialNumber(const QByteArray& text)
{
    d->fields().texts[SerialNumber] = text;
}

QByteArray GVCPDiscoveryAckPacket::userName() const
{
    return d->text(UserName);
}

void GVCPDiscoveryAckPacket::setUserName(const QByteArray& text)
{
    d->fields().texts[UserName] = text;
}
