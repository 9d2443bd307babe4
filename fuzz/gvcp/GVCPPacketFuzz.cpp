#include "fuzz/Check.h"
#include "gvcp/GVCPActionCommandPacket.h"
#include "gvcp/GVCPDiscoveryAckPacket.h"
#include "gvcp/GVCPEventCommandPacket.h"
#include "gvcp/GVCPEventDataCommandPacket.h"
#include "gvcp/GVCPMemoryReadCommandPacket.h"
#include "gvcp/GVCPMemoryWriteCommandPacket.h"
#include "gvcp/GVCPPacketResendCommandPacket.h"
#include "gvcp/GVCPRegisterReadCommandPacket.h"
#include "gvcp/GVCPRegisterWriteCommandPacket.h"

namespace {
using Command = GVCPCommandPacket;
using Ack = GVCPAckPacket;
using Found = GVCPDiscoveryAckPacket;

template <typename Packet>
void check(const QByteArray& bytes)
{
    constexpr bool isCommand = std::is_base_of_v<Command, Packet>;
    checkForms<Packet>(bytes);
    Packet packet(bytes);
    const bool isRead =
        bytes.size() >= 8 && word(bytes, 4) == bytes.size() - 8 && (!isCommand || bytes[0] == '\x42');
    require(packet.requestId() == (isRead ? word(bytes, 6) : 0), "a message of another form has no id");
    require(packet.isValid() == (packet.requestId() != 0), "and is not valid");
    const QByteArray payload = packet.payload();
    if constexpr (!std::is_same_v<Packet, Found>) {
        require(payload == (isRead ? bytes.mid(8) : QByteArray()), "the payload stands behind the header");
        require(packet.serialize() == (packet.isValid() ? bytes : QByteArray()), "it goes as it came");
        packet.setRequestId(5);
        packet.setPayload(payload + "1234", NetworkOrder);
        requireSame(told(packet), told(Packet(packet.serialize())), "a changed message is read as it is");
    } else {
        Found read(0, 1);
        read.parse(payload, NetworkOrder);
        require(read.payload() == payload, "a block is read as it is written");
        QByteArray block = bytes.mid(8, 248).leftJustified(248, '\0');
        for (const int reserved : {24, 40, 56})
            block.replace(reserved, 12, QByteArray(12, '\0'));
        for (const int reservedOrEndOfText : {8, 9, 103, 135, 167, 215, 231, 247})
            block[reservedOrEndOfText] = '\0';
        require(bytes.size() < 8 + 248 || payload == block, "a whole block goes as it came");
    }
}

void checkFactory(const QByteArray& bytes)
{
    const std::unique_ptr<GVCPPacket> made(GVCPPacket::create(bytes)),
        same(GVCPPacket::create(ByteSlice(bytes)));
    require((made != nullptr) == (same != nullptr), "a slice has the class of an array");
    if (made == nullptr)
        return;
    const bool isFound = dynamic_cast<const Found*>(made.get()) != nullptr;
    const QByteArray byHand = isFound             ? Found(bytes).serialize()
                              : made->isCommand() ? Command(bytes).serialize()
                                                  : Ack(bytes).serialize();
    require(made->serialize() == byHand && same->serialize() == byHand, "made as by hand");
}

template <typename... Packets>
void checkAs(unsigned which, const QByteArray& bytes)
{
    constexpr void (*checks[])(const QByteArray&) = {checkFactory, check<Packets>...};
    checks[which % std::size(checks)](bytes);
}
} // namespace

/// A GVCP message, as what the factory makes of it or as a packet of one class: the first byte says of which.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size > 0)
        checkAs<Command, Ack, Found, GVCPActionCommandPacket, GVCPEventCommandPacket,
                GVCPEventDataCommandPacket, GVCPMemoryReadCommandPacket, GVCPMemoryWriteCommandPacket,
                GVCPPacketResendCommandPacket, GVCPRegisterReadCommandPacket, GVCPRegisterWriteCommandPacket>(
            data[0], viewOf(data + 1, size - 1));
    return 0;
}
