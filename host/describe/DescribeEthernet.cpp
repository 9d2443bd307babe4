#include "host/describe/FieldSink.h"
#include "host/describe/Layers.h"
#include "host/describe/Summary.h"
#include "packets/EthernetFrame.h"

#include <fmt/format.h>

#include <array>

namespace mesk::host {

void addSizes(FieldSink& fields, const NetworkPacket& packet)
{
    fields.number("layer", packet.layer());
    fields.number("headerSize", packet.headerSize());
    fields.number("payloadSize", packet.payloadSize());
    fields.number("totalSize", packet.totalSize());
}

/// By hand, since there are two in every frame.
void addMac(FieldSink& fields, std::string_view name, const MacAddress& address)
{
    constexpr const char* digits = "0123456789abcdef";
    std::array<char, std::size_t{3} * MacAddress::sizeBytes> text{};
    char* to = text.data();
    for (int index = 0; index < MacAddress::sizeBytes; ++index) {
        const quint8 byte = address.constData()[index];
        *to++ = digits[byte >> 4];
        *to++ = digits[byte & 0xf];
        *to++ = ':';
    }
    fields.text(name, {text.data(), text.size() - 1});
}

std::string_view viewOf(const QByteArray& bytes)
{
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

unsigned byteAt(std::string_view bytes, std::size_t at)
{
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

unsigned wordAt(std::string_view bytes, std::size_t at)
{
    return at + 2 <= bytes.size() ? byteAt(bytes, at) << 8 | byteAt(bytes, at + 1) : 0;
}

void addFields(FieldSink& fields, const EthernetFrame& frame)
{
    addSizes(fields, frame);
    addMac(fields, "source", frame.source());
    addMac(fields, "destination", frame.destination());
    fields.code("etherType", frame.etherType(), 4);
    fields.flag("hasCrc", frame.hasCrc());
    fields.signedNumber("userValue", frame.userValue());
    fields.flag("userFlag", frame.userFlag());
}

void summarize(Summary& summary, const EthernetFrame& frame)
{
    summary.source = frame.source().toStdString(":");
    summary.destination = frame.destination().toStdString(":");
    summary.protocol = fmt::format("0x{:04x}", frame.etherType());
}

std::string whyNotValid(const EthernetFrame& frame, std::string_view bytes)
{
    if (frame.headerSize() != 0) {
        return "";
    }
    constexpr std::size_t typeAt = 12;
    const bool tagged = wordAt(bytes, typeAt) == EthernetFrame::vlanTagType;
    return fmt::format("{} bytes are there, {} needs {}", bytes.size(),
                       tagged ? "a tagged header" : "a header",
                       tagged ? EthernetFrame::taggedHeaderSizeBytes : EthernetFrame::headerSizeBytes);
}

} // namespace mesk::host
