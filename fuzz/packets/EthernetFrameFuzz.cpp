#include "fuzz/packets/PacketRules.h"
#include "host/describe/FrameDescriber.h"
#include "host/describe/Summary.h"
#include "packets/Crc32.h"
#include "packets/EthernetFrame.h"

namespace {
/// All that is in a frame, each layer made of the one below it, which is gone then.
struct Layers {
    explicit Layers(const QByteArray& bytes)
    {
        std::vector<char> memory(bytes.begin(), bytes.end());
        const QByteArray view = QByteArray::fromRawData(memory.data(), bytes.size());
        internet.reset(EthernetFrame(view).internetPacket());
        std::fill(memory.begin(), memory.end(), '\xa5');
        if (const auto* ip = dynamic_cast<const IPv4Packet*>(internet.get()))
            transport.reset(IPv4Packet(*ip).transportPacket());
        if (const auto* udp = dynamic_cast<const UdpPacket*>(transport.get()))
            application.reset(UdpPacket(*udp).applicationPacket());
    }
    std::unique_ptr<InternetPacket> internet;
    std::unique_ptr<TransportPacket> transport;
    std::unique_ptr<ApplicationPacket> application;
};

/// What the host program has to say of a frame.
std::string dump(const QByteArray& bytes)
{
    fmt::memory_buffer text;
    mesk::host::JsonFields fields(text);
    mesk::host::Summary line;
    fields.openList("layers");
    const std::string reason =
        mesk::host::FrameDescriber(&fields, &line).describe(EthernetFrame(bytes), bytes);
    return fmt::to_string(text) + line.source + line.destination + line.protocol + line.info + reason;
}

void checkFrame(const QByteArray& bytes)
{
    const EthernetFrame frame(bytes);
    require(frame.serialize() == (frame.headerSize() == 0 ? QByteArray() : bytes), "a frame goes as it came");
    requireSame(told(EthernetFrame(QByteArray(bytes))), told(frame),
                "given up or kept, an array is the same");
    const std::unique_ptr<EthernetFrame> clone(frame.clone(false, 0)), withCrc(frame.clone(true, 0));
    if (frame.headerSize() != 0)
        requireSame(told(*clone), told(frame), "a clone of what has bytes is its source");
    const QByteArray whole = withCrc->serialize();
    require(whole.startsWith(frame.serialize()) &&
                ethernetCrc32(whole.constData(), std::size_t(whole.size())) == 0x2144df1c,
            "the sequence is that of the bytes before it");
    const EthernetFrame built(frame.source(), frame.destination(), bytes.mid(12));
    require(built.serialize() == (bytes.size() < 14 ? QByteArray() : bytes), "a frame is built of its parts");
}

template <typename Packet>
void checkLayer(const NetworkPacket* made, const QByteArray& bytes)
{
    const auto* packet = dynamic_cast<const Packet*>(made);
    require(packet != nullptr, "the class is that of the number in the layer below");
    requireSame(told(*packet), told(Packet(bytes)), "a layer outlives those below it");
    checkRules(*packet, bytes);
}

void checkLayers(const Layers& layers, quint16 etherType, const QByteArray& bytes)
{
    if (etherType == 0x0800)
        checkLayer<IPv4Packet>(layers.internet.get(), bytes);
    else if (etherType == 0x0806)
        checkLayer<ArpPacket>(layers.internet.get(), bytes);
    else
        require(layers.internet == nullptr, "other types have no class");
    if (layers.transport == nullptr)
        return;
    const QByteArray payload = layers.internet->payload();
    if (layers.transport->protocol() == 1)
        return checkLayer<IcmpPacket>(layers.transport.get(), payload);
    checkLayer<UdpPacket>(layers.transport.get(), payload);
    const auto& udp = static_cast<const UdpPacket&>(*layers.transport);
    const std::unique_ptr<ApplicationPacket> lasting(udp.applicationPacket());
    if (dynamic_cast<const DhcpPacket*>(lasting.get()) != nullptr)
        checkLayer<DhcpPacket>(layers.application.get(), udp.payload());
    require(lasting == nullptr || lasting->serialize() == layers.application->serialize(),
            "a message outlives its datagram");
}

// From the inside out, as a caller answers.
void checkSending(const Layers& layers, const EthernetFrame& frame)
{
    if (layers.internet == nullptr)
        return;
    const EthernetFrame around(frame.source(), frame.destination(), layers.internet.get());
    const QByteArray head = frame.serialize().left(12),
                     type = frame.serialize().mid(int(frame.headerSize()) - 2, 2);
    require(around.serialize() == (head + type + layers.internet->serialize()).leftJustified(60, '\0'),
            "a frame is written around its child");
    if (layers.application == nullptr)
        return;
    const auto& udp = static_cast<const UdpPacket&>(*layers.transport);
    UdpPacket datagram(udp.sourcePort(), udp.destinationPort(), *layers.application);
    IPv4Packet packet(layers.internet->sourceAddress(), layers.internet->destinationAddress(), &datagram);
    const EthernetFrame sent(frame.source(), frame.destination(), &packet);
    const QByteArray bytes = sent.serialize();
    require(quint32(bytes.size()) == sent.totalSize(), "the size is known beforehand");
    const Layers received(bytes);
    require(static_cast<const UdpPacket&>(*received.transport).payload() == layers.application->serialize(),
            "a message arrives as it was sent");
    checkLayers(received, IPv4Packet::EtherType, bytes.mid(14));
}
} // namespace

/// A frame, with all that is in it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = viewOf(data, size);
    const EthernetFrame frame(bytes);
    const Layers layers(bytes);
    checkFrame(bytes);
    checkLayers(layers, frame.etherType(), bytes.mid(int(frame.headerSize())));
    checkSending(layers, frame);
    requireSame(dump(bytes), dump(QByteArray(bytes.constData(), bytes.size())),
                "a dump is of the bytes alone");
    return 0;
}
