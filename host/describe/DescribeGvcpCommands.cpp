#include "gvcp/GVCPActionCommandPacket.h"
#include "gvcp/GVCPEventCommandPacket.h"
#include "gvcp/GVCPEventDataCommandPacket.h"
#include "gvcp/GVCPMemoryReadCommandPacket.h"
#include "gvcp/GVCPMemoryWriteCommandPacket.h"
#include "gvcp/GVCPPacketResendCommandPacket.h"
#include "gvcp/GVCPRegisterReadCommandPacket.h"
#include "gvcp/GVCPRegisterWriteCommandPacket.h"
#include "host/describe/FieldSink.h"
#include "host/describe/GvcpNames.h"
#include "host/describe/Layers.h"
#include "host/describe/Summary.h"

#include <fmt/format.h>

#include <algorithm>

namespace mesk::host {

namespace {

constexpr quint16 itemsInLine = 4; // registers that a line for people names

const GVCPCommandPacket& asCommand(const GVCPCommandPacket& packet)
{
    return packet;
}

template <typename... Arguments>
void addInfo(Summary& summary, fmt::format_string<Arguments...> format, Arguments&&... arguments)
{
    fmt::format_to(std::back_inserter(summary.info), format, std::forward<Arguments>(arguments)...);
}

/// A list of what a message has several of.
/// @param addItem puts the fields of the item of an index.
template <typename AddItem>
void addItems(FieldSink& fields, std::string_view name, quint16 count, const AddItem& addItem)
{
    fields.openList(name);
    for (quint16 index = 0; index < count; ++index) {
        fields.openItem();
        addItem(index);
        fields.closeItem();
    }
    fields.closeList();
}

/// The first items, in the line of the message.
template <typename AddItem>
void addItemsInLine(Summary& summary, quint16 count, const AddItem& addItem)
{
    for (quint16 index = 0; index < std::min(count, itemsInLine); ++index) {
        addItem(index);
    }
    if (count > itemsInLine) {
        summary.info += " ...";
    }
}

} // namespace

void addFields(FieldSink& fields, const GVCPCommandPacket& packet)
{
    addSizes(fields, packet);
    fields.flag("isValid", packet.isValid());
    fields.flag("isCommand", packet.isCommand());
    fields.code("command", packet.command(), 4);
    fields.code("flags", packet.flags(), 2);
    fields.number("requestId", packet.requestId());
    fields.number("payloadLength", packet.payloadLength());
    fields.bytes("payload", viewOf(packet.payload()));
}

void summarize(Summary& summary, const GVCPCommandPacket& packet)
{
    summary.protocol = "GVCP";
    summary.info = fmt::format("{} id {}", gvcpMessageName(packet.command()), packet.requestId());
}

std::string whyNotValid(const GVCPCommandPacket& packet, std::string_view bytes)
{
    if (packet.isValid()) {
        return "";
    }
    if (std::string reason = gvcpLengthProblem(bytes); !reason.empty()) {
        return reason;
    }
    if (byteAt(bytes, 0) != GVCPPacket::KeyByte) {
        return fmt::format("key byte 0x{:02x}, not 0x{:02x}", byteAt(bytes, 0), GVCPPacket::KeyByte);
    }
    return "request id 0";
}

void addFields(FieldSink& fields, const GVCPRegisterReadCommandPacket& packet)
{
    addFields(fields, asCommand(packet));
    fields.flag("isAckRequired", packet.isAckRequired());
    const quint16 count = packet.addressCount();
    fields.number("addressCount", count);
    addItems(fields, "addresses", count,
             [&](quint16 index) { fields.code("address", packet.address(index), 8); });
}

void summarize(Summary& summary, const GVCPRegisterReadCommandPacket& packet)
{
    summarize(summary, asCommand(packet));
    addItemsInLine(summary, packet.addressCount(),
                   [&](quint16 index) { addInfo(summary, " 0x{:08x}", packet.address(index)); });
}

void addFields(FieldSink& fields, const GVCPRegisterWriteCommandPacket& packet)
{
    addFields(fields, asCommand(packet));
    const quint16 count = packet.registerCount();
    fields.number("registerCount", count);
    addItems(fields, "registers", count, [&](quint16 index) {
        fields.code("address", packet.address(index), 8);
        fields.code("value", packet.value(index), 8);
    });
}

void summarize(Summary& summary, const GVCPRegisterWriteCommandPacket& packet)
{
    summarize(summary, asCommand(packet));
    addItemsInLine(summary, packet.registerCount(), [&](quint16 index) {
        addInfo(summary, " 0x{:08x}=0x{:08x}", packet.address(index), packet.value(index));
    });
}

void addFields(FieldSink& fields, const GVCPMemoryReadCommandPacket& packet)
{
    addFields(fields, asCommand(packet));
    fields.flag("isAckRequired", packet.isAckRequired());
    fields.code("address", packet.address(), 8);
    fields.number("count", packet.count());
}

void summarize(Summary& summary, const GVCPMemoryReadCommandPacket& packet)
{
    summarize(summary, asCommand(packet));
    addInfo(summary, " 0x{:08x}, {} bytes", packet.address(), packet.count());
}

void addFields(FieldSink& fields, const GVCPMemoryWriteCommandPacket& packet)
{
    addFields(fields, asCommand(packet));
    fields.code("address", packet.address(), 8);
    fields.bytes("data", viewOf(packet.data()));
}

void summarize(Summary& summary, const GVCPMemoryWriteCommandPacket& packet)
{
    summarize(summary, asCommand(packet));
    addInfo(summary, " 0x{:08x}, {} bytes", packet.address(), packet.data().size());
}

void addFields(FieldSink& fields, const GVCPEventCommandPacket& packet)
{
    addFields(fields, asCommand(packet));
    const quint16 count = packet.eventCount();
    fields.number("eventCount", count);
    addItems(fields, "events", count, [&](quint16 index) {
        fields.code("eventId", packet.eventId(index), 4);
        fields.number("streamChannelIndex", packet.streamChannelIndex(index));
        fields.number("blockId", packet.blockId(index));
        fields.number("timestamp", packet.timestamp(index));
    });
}

void summarize(Summary& summary, const GVCPEventCommandPacket& packet)
{
    summarize(summary, asCommand(packet));
    addInfo(summary, ", {} events", packet.eventCount());
}

void addFields(FieldSink& fields, const GVCPEventDataCommandPacket& packet)
{
    addFields(fields, asCommand(packet));
    fields.code("eventId", packet.eventId(), 4);
    fields.number("streamChannelIndex", packet.streamChannelIndex());
    fields.number("blockId", packet.blockId());
    fields.number("timestamp", packet.timestamp());
    fields.bytes("data", viewOf(packet.data()));
}

void summarize(Summary& summary, const GVCPEventDataCommandPacket& packet)
{
    summarize(summary, asCommand(packet));
    addInfo(summary, ", event 0x{:04x}, {} bytes", packet.eventId(), packet.data().size());
}

void addFields(FieldSink& fields, const GVCPPacketResendCommandPacket& packet)
{
    addFields(fields, asCommand(packet));
    fields.number("streamChannelIndex", packet.streamChannelIndex());
    fields.number("blockId", packet.blockId());
    fields.number("firstPacketId", packet.firstPacketId());
    fields.number("lastPacketId", packet.lastPacketId());
}

void summarize(Summary& summary, const GVCPPacketResendCommandPacket& packet)
{
    summarize(summary, asCommand(packet));
    addInfo(summary, " block {}, packets {} to {}", packet.blockId(), packet.firstPacketId(),
            packet.lastPacketId());
}

void addFields(FieldSink& fields, const GVCPActionCommandPacket& packet)
{
    addFields(fields, asCommand(packet));
    fields.code("deviceKey", packet.deviceKey(), 8);
    fields.code("groupKey", packet.groupKey(), 8);
    fields.code("groupMask", packet.groupMask(), 8);
}

void summarize(Summary& summary, const GVCPActionCommandPacket& packet)
{
    summarize(summary, asCommand(packet));
    addInfo(summary, " device 0x{:08x} group 0x{:08x} mask 0x{:08x}", packet.deviceKey(), packet.groupKey(),
            packet.groupMask());
}

} // namespace mesk::host
