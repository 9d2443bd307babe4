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

#include <memory>

/// A received acknowledge read down to its fields, by the packet classes and by libtins.
namespace mesk::benchmarks {

namespace {

QByteArray ackFrame(int payloadBytes)
{
    const GVCPAckPacket ack(0, payloadBytes == 4 ? 0x81 : 0x03, 7, QByteArray(payloadBytes, '\x5a'),
                            NetworkOrder);
    UdpPacket udp(GVCPPacket::Port, 50000, ack);
    IPv4Packet ip(IpAddress(0xC0A80102U), IpAddress(0xC0A80101U), &udp);
    return EthernetFrame(MacAddress(quint64(1)), MacAddress(quint64(2)), &ip).serialize();
}

quint64 walk(const QByteArray& bytes)
{
    const EthernetFrame frame(bytes);
    const std::unique_ptr<InternetPacket> internet(frame.internetPacket());
    const auto* ip = dynamic_cast<const IPv4Packet*>(internet.get());
    const std::unique_ptr<TransportPacket> transport(ip->transportPacket());
    const auto* udp = dynamic_cast<const UdpPacket*>(transport.get());
    const std::unique_ptr<ApplicationPacket> application(udp->applicationPacket());
    const auto* ack = dynamic_cast<const GVCPAckPacket*>(application.get());
    return quint64(udp->sourcePort()) + udp->destinationPort() + ack->status() + ack->acknowledge() +
           ack->payloadLength() + ack->requestId() + // the device block stays undecoded
           (ack->payloadLength() == 4 ? qFromBigEndian<quint32>(ack->payload().constData()) : 0);
}

quint64 walkByTins(const QByteArray& bytes)
{
    const Tins::EthernetII frame(reinterpret_cast<const uint8_t*>(bytes.constData()), uint32_t(bytes.size()));
    const auto& udp = frame.rfind_pdu<Tins::UDP>();
    const auto* gvcp = udp.rfind_pdu<Tins::RawPDU>().payload().data();
    return quint64(udp.sport()) + udp.dport() + qFromBigEndian<quint16>(gvcp) +
           qFromBigEndian<quint16>(gvcp + 2) + qFromBigEndian<quint16>(gvcp + 4) +
           qFromBigEndian<quint16>(gvcp + 6) +
           (qFromBigEndian<quint16>(gvcp + 4) == 4 ? qFromBigEndian<quint32>(gvcp + 8) : 0);
}

template <typename Walk>
void run(benchmark::State& state, Walk walkOnce)
{
    const auto bytes = ackFrame(state.range(0) == 60 ? 4 : 248);
    if (bytes.size() != state.range(0) || walk(bytes) != walkByTins(bytes)) {
        state.SkipWithError("the two read different fields");
        return;
    }
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(walkOnce(bytes));
    }
}

void walkAck(benchmark::State& state)
{
    run(state, walk);
}

void walkAckByTins(benchmark::State& state)
{
    run(state, walkByTins);
}

BENCHMARK(walkAck)->Arg(60)->Arg(298);
BENCHMARK(walkAckByTins)->Arg(60)->Arg(298);

} // namespace

} // namespace mesk::benchmarks
