#pragma once

#include "gvcp/GVCPAckPacket.h"
#include "packets/IpAddress.h"
#include "packets/MacAddress.h"

#include <QByteArray>

/// A device's answer to a discovery (GVCP message 0x0003). The payload is the device information block, 248
/// bytes:
///
/// | byte | width | field             |
/// |-----:|------:|-------------------|
/// |    0 |     2 | specVersionMajor  |
/// |    2 |     2 | specVersionMinor  |
/// |    4 |     4 | deviceMode        |
/// |    8 |     2 | reserved, 0       |
/// |   10 |     6 | macAddress        |
/// |   16 |     4 | ipConfigOptions   |
/// |   20 |     4 | ipConfigCurrent   |
/// |   24 |    12 | reserved, 0       |
/// |   36 |     4 | currentIp         |
/// |   40 |    12 | reserved, 0       |
/// |   52 |     4 | subnetMask        |
/// |   56 |    12 | reserved, 0       |
/// |   68 |     4 | defaultGateway    |
/// |   72 |    32 | manufacturerName  |
/// |  104 |    32 | modelName         |
/// |  136 |    32 | deviceVersion     |
/// |  168 |    48 | manufacturerInfo  |
/// |  216 |    16 | serialNumber      |
/// |  232 |    16 | userName          |
///
/// Numbers in network byte order on the wire, in host byte order here. Texts are filled up with zeros and end
/// with one. This class holds the fields and makes the block anew whenever it is wanted, whatever came. A
/// block that is cut short leaves the fields behind its end 0 or empty (an address that is not all there
/// too), and it is read also where the header is not valid. Never throws. [one thread at a time, the getters
/// too]
class GVCPDiscoveryAckPacket : public GVCPAckPacket {
public:
    static constexpr quint32 blockSizeBytes = 248;
    /// With a longer text in a field, isPayloadValid() refuses everything. A received manufacturerInfo can be
    /// longer.
    static constexpr int textSizeMaxBytes = 32;

    GVCPDiscoveryAckPacket(quint16 status, quint16 ackId);
    explicit GVCPDiscoveryAckPacket(const QByteArray& bytes);
    explicit GVCPDiscoveryAckPacket(ByteSlice&& bytes);
    ~GVCPDiscoveryAckPacket() override;

    /// 248, whatever was received.
    quint32 payloadSize() const override;
    /// A new array of header() and payload(), also with the acknowledge id 0.
    QByteArray serialize() const override;
    /// A new block.
    QByteArray payload() const override;
    /// True if @p bytes has at most 65,536 bytes and the six texts held now at most 32 each.
    bool isPayloadValid(const QByteArray& bytes) const override;

    /// Takes the fields from a device information block; changes nothing if isPayloadValid() is false. A text
    /// with bytes behind its first zero is taken whole, one without a zero too.
    /// @param byteOrder HostOrder: the numbers of the block are taken as they lie in memory.
    void parse(const QByteArray& block, ByteOrder byteOrder);

    quint16 specVersionMajor() const;
    void setSpecVersionMajor(quint16 version);
    quint16 specVersionMinor() const;
    void setSpecVersionMinor(quint16 version);
    quint32 deviceMode() const;
    void setDeviceMode(quint32 mode);
    MacAddress macAddress() const;
    void setMacAddress(MacAddress address);
    quint32 ipConfigOptions() const;
    void setIpConfigOptions(quint32 options);
    quint32 ipConfigCurrent() const;
    void setIpConfigCurrent(quint32 options);
    IpAddress currentIp() const;
    void setCurrentIp(IpAddress address);
    /// 255.255.255.0 is 0xFFFFFF00.
    quint32 subnetMask() const;
    void setSubnetMask(quint32 mask);
    IpAddress defaultGateway() const;
    void setDefaultGateway(IpAddress address);
    /// The texts are held as they are given; the block has at most the width of the field less 1 of them.
    QByteArray manufacturerName() const;
    void setManufacturerName(const QByteArray& text);
    QByteArray modelName() const;
    void setModelName(const QByteArray& text);
    QByteArray deviceVersion() const;
    void setDeviceVersion(const QByteArray& text);
    QByteArray manufacturerInfo() const;
    void setManufacturerInfo(const QByteArray& text);
    QByteArray serialNumber() const;
    void setSerialNumber(const QByteArray& text);
    QByteArray userName() const;
    void setUserName(const QByteArray& text);

private:
    struct D;
    PlacedRecord<D, 112> d; // beside that of the base, which is not used here
};
