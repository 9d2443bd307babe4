#include "gvcp/GVCPAckPacket.h"
#include "packets/EthernetFrame.h"
#include "packets/IPv4Packet.h"
#include "packets/IpAddress.h"
#include "packets/UdpPacket.h"

#include <benchmark/benchmark.h>
#include <tins/ethernetII.h>
#include <tins/ip.h>
#include <tins/rawpdu.h>
#include <tins/udp.h>

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

/// An acknowledge built into a frame, by the packet classes and by libtins.
namespace mesk::benchmarks {

namespace {

QByteArray build(const QByteArray& payload)
{
    const GVCPAckPacket ack(0, 0x81, 7, payload, NetworkOrder);
    UdpPacket udp(GVCPPacket::Port, 50000, ack);
    IPv4Packet ip(IpAddress(0xC0A80102U), IpAddress(0xC0A80101U), &udp);
    return EthernetFrame(MacAddress(quint64(1)), MacAddress(quint64(2)), &ip).serialize();
}

std::vector<uint8_t> buildByTins(const QByteArray& payload, const QByteArray& like)
{
    std::vector<uint8_t> message(8 + size_t(payload.size()));
    qToBigEndian<quint16>(0x81, &message[2]);
    qToBigEndian<quint16>(quint16(payload.size()), &message[4]);
    qToBigEndian<quint16>(7, &message[6]);
    std::memcpy(&message[8], payload.constData(), size_t(payload.size()));
    // Handed over by pointer: operator/ would clone each layer.
    auto ip = std::make_unique<Tins::IP>(Tins::IPv4Address(qToBigEndian(0xC0A80101U)),
                                         Tins::IPv4Address(qToBigEndian(0xC0A80102U)));
    ip->id(qFromBigEndian<quint16>(like.constData() + 18));
    ip->ttl(uint8_t(like[22]));
    ip->flags(Tins::IP::Flags(uint8_t(like[20]) >> 5));
    const auto* macs = reinterpret_cast<const uint8_t*>(like.constData());
    auto udp = std::make_unique<Tins::UDP>(50000, GVCPPacket::Port);
    udp->inner_pdu(new Tins::RawPDU(std::move(message)));
    ip->inner_pdu(udp.release());
    Tins::EthernetII frame(macs, macs + 6);
    frame.inner_pdu(ip.release());
    return frame.serialize();
}

template <typename Build>
void run(benchmark::State& state, Build buildOnce)
{
    const QByteArray payload(state.range(0) == 60 ? 4 : 248, '\x5a');
    const auto like = build(payload);
    const auto peer = buildByTins(payload, like);
    if (like.size() != state.range(0) || !std::equal(like.begin(), like.end(), peer.begin(), peer.end(),
                                                     [](char a, uint8_t b) { return uint8_t(a) == b; })) {
        state.SkipWithError("the two build different bytes");
        return;
    }
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(buildOnce(payload, like));
    }
}

void buildAck(benchmark::State& state)
{
    run(state, [](const QByteArray& payload, const QByteArray&) { return build(payload); });
}

void buildAckByTins(benchmark::State& state)
{
    run(state, buildByTins);
}

BENCHMARK(buildAck)->Arg(60)->Arg(298);
BENCHMARK(buildAckByTins)->Arg(60)->Arg(298);

} // namespace

} // namespace mesk::benchmarks
