#include "benchmarks/packets/TinsWork.h"

#include "benchmarks/packets/SampleMessages.h"

#include <tins/dhcp.h>
#include <tins/ethernetII.h>
#include <tins/ip.h>
#include <tins/rawpdu.h>
#include <tins/udp.h>

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>

namespace mesk::benchmarks::tins {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint16_t gvcpPort = 3956, dhcpServerPort = 67, dhcpClientPort = 68;
constexpr std::uint16_t discoveryAck = 0x0003, readRegisterAck = 0x0081;
constexpr std::size_t gvcpHeaderBytes = 8, deviceBlockBytes = 248;

/// Places and widths of the texts in a device information block.
struct TextPlace {
    std::size_t at;
    std::size_t width;
    const char* text;
};
constexpr std::array<TextPlace, 6> texts{{{72, 32, manufacturerName},
                                          {104, 32, modelName},
                                          {136, 32, deviceVersion},
                                          {168, 48, manufacturerInfo},
                                          {216, 16, serialNumber},
                                          {232, 16, userName}}};

Tins::IPv4Address address(std::uint32_t hostOrder)
{
    return Tins::IPv4Address(qToBigEndian(hostOrder));
}

void writeHeader(std::uint8_t* to, std::uint16_t code, std::size_t payloadBytes)
{
    qToBigEndian<std::uint16_t>(code, to + 2);
    qToBigEndian<std::uint16_t>(std::uint16_t(payloadBytes), to + 4);
    qToBigEndian<std::uint16_t>(requestId, to + 6);
}

// Layers are handed over by pointer: operator/ would clone each of them.
Bytes buildFrame(std::uint16_t sourcePort, std::uint16_t destinationPort, std::unique_ptr<Tins::PDU> message)
{
    auto udp = std::make_unique<Tins::UDP>(destinationPort, sourcePort);
    udp->inner_pdu(message.release());
    auto ip = std::make_unique<Tins::IP>(address(hostIp), address(deviceIp));
    ip->id(0);
    ip->ttl(255);
    ip->flags(Tins::IP::DONT_FRAGMENT);
    ip->inner_pdu(udp.release());
    Tins::EthernetII frame(hostMac.data(), deviceMac.data());
    frame.inner_pdu(ip.release());
    return frame.serialize();
}

template <typename Read>
quint64 walkToPayload(const QByteArray& bytes, Read read)
{
    const Tins::EthernetII frame(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                 std::uint32_t(bytes.size()));
    const auto& udp = frame.rfind_pdu<Tins::UDP>();
    return quint64(udp.sport()) + udp.dport() + read(udp.rfind_pdu<Tins::RawPDU>().payload());
}

quint64 readHeader(const std::uint8_t* gvcp)
{
    return quint64(qFromBigEndian<quint16>(gvcp)) + qFromBigEndian<quint16>(gvcp + 2) +
           qFromBigEndian<quint16>(gvcp + 4) + qFromBigEndian<quint16>(gvcp + 6);
}

} // namespace

Bytes buildAck(const QByteArray& payload)
{
    const auto payloadBytes = std::size_t(payload.size());
    Bytes message(gvcpHeaderBytes + payloadBytes);
    writeHeader(message.data(), payloadBytes == sizeof(registerValue) ? readRegisterAck : discoveryAck,
                payloadBytes);
    std::memcpy(&message[gvcpHeaderBytes], payload.constData(), payloadBytes);
    return buildFrame(gvcpPort, hostPort, std::make_unique<Tins::RawPDU>(std::move(message)));
}

Bytes buildDevice()
{
    Bytes message(gvcpHeaderBytes + deviceBlockBytes);
    writeHeader(message.data(), discoveryAck, deviceBlockBytes);
    std::uint8_t* const block = message.data() + gvcpHeaderBytes;
    qToBigEndian(versionMajor, block);
    qToBigEndian(versionMinor, block + 2);
    qToBigEndian(deviceMode, block + 4);
    std::memcpy(block + 10, deviceMac.data(), deviceMac.size());
    qToBigEndian(ipConfigOptions, block + 16);
    qToBigEndian(ipConfigCurrent, block + 20);
    qToBigEndian(deviceIp, block + 36);
    qToBigEndian(subnetMask, block + 52);
    qToBigEndian(hostIp, block + 68);
    for (const TextPlace& each : texts) {
        const std::string text(each.text);
        std::copy_n(text.begin(), std::min(text.size(), each.width - 1), block + each.at);
    }
    return buildFrame(gvcpPort, hostPort, std::make_unique<Tins::RawPDU>(std::move(message)));
}

Bytes buildDhcp()
{
    auto message = std::make_unique<Tins::DHCP>();
    message->opcode(2);
    message->htype(1);
    message->hlen(std::uint8_t(hostMac.size()));
    message->xid(transactionId);
    message->yiaddr(address(hostIp));
    message->chaddr(Tins::HWAddress<6>(hostMac.data()));
    for (const SampleOption& each : dhcpOptions) {
        message->add_option(Tins::DHCP::option(each.code, each.size, each.value.data()));
    }
    message->end();
    return buildFrame(dhcpServerPort, dhcpClientPort, std::move(message));
}

quint64 walkAck(const QByteArray& frame)
{
    return walkToPayload(frame, [](const Bytes& message) {
        const std::uint8_t* const gvcp = message.data();
        const bool isRegister = qFromBigEndian<quint16>(gvcp + 2) == readRegisterAck;
        return readHeader(gvcp) + (isRegister ? qFromBigEndian<quint32>(gvcp + gvcpHeaderBytes) : 0);
    });
}

quint64 walkDevice(const QByteArray& frame)
{
    return walkToPayload(frame, [](const Bytes& message) {
        const std::uint8_t* const block = message.data() + gvcpHeaderBytes;
        quint64 sum =
            readHeader(message.data()) + qFromBigEndian<quint16>(block) + qFromBigEndian<quint16>(block + 2);
        for (const int at : {4, 16, 20, 36, 52, 68}) {
            sum += qFromBigEndian<quint32>(block + at);
        }
        for (std::size_t i = 0; i < deviceMac.size(); ++i) {
            sum += quint64(block[10 + i]) << (8 * i);
        }
        for (const TextPlace& each : texts) {
            const auto* const begin = reinterpret_cast<const char*>(block + each.at);
            const std::string text(begin, strnlen(begin, each.width));
            sum += text.size() + std::uint8_t(text.back());
        }
        return sum;
    });
}

quint64 walkDhcp(const QByteArray& frame)
{
    return walkToPayload(frame, [](const Bytes& bytes) {
        const Tins::DHCP message(bytes.data(), std::uint32_t(bytes.size()));
        quint64 sum = quint64(qToBigEndian(message.xid())) + qFromBigEndian(std::uint32_t(message.yiaddr()));
        for (const SampleOption& each : dhcpOptions) {
            const auto* const option = message.search_option(Tins::DHCP::OptionTypes(each.code));
            sum += option->data_size() + option->data_ptr()[option->data_size() - 1];
        }
        return sum;
    });
}

} // namespace mesk::benchmarks::tins
