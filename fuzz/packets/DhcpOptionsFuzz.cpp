#include "fuzz/packets/PacketRules.h"

#include <QMap>

namespace {
using Options = QMap<quint8, QByteArray>;

Options optionsOf(const DhcpPacket& packet)
{
    Options options;
    for (int code = 0; code < 256; ++code)
        if (packet.hasOption(quint8(code)))
            options[quint8(code)] = packet.option(quint8(code));
    require(options.keys() == packet.optionCodes(), "the codes are those of the options");
    return options;
}

/// The area that options are written as. It isn't read back as they are with one that has no value or no
/// code, or that found no room.
QByteArray areaOf(const Options& options, bool& isReadBack)
{
    QByteArray area;
    QList<quint8> codes = options.keys();
    if (codes.removeOne(53))
        codes.prepend(53);
    for (const quint8 code : qAsConst(codes)) {
        const QByteArray value = options[code];
        const QByteArray option = char(code) + (value.isEmpty() ? value : char(value.size()) + value);
        const bool fits = area.size() + option.size() < 308;
        area += fits ? option : QByteArray();
        isReadBack = isReadBack && fits && !value.isEmpty() && code != 0 && code != 255;
    }
    return area + '\xff';
}
} // namespace

/// An area of DHCP options: received as it is, and its options set one by one.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray area = viewOf(data, size);
    DhcpPacket built;
    built.setRequest(true);
    const QByteArray head(built.serialize().constData(), 240);
    checkForms<DhcpPacket>(head + area);
    for (int at = 0; at + 1 < area.size(); at += 2 + quint8(area[at + 1])) {
        const QByteArray value = area.mid(at + 2, quint8(area[at + 1]));
        require(built.setOption(quint8(area[at]), value) && built.option(quint8(area[at])) == value,
                "it is set");
    }
    const DhcpPacket received(head + area);
    for (const quint8 code : received.optionCodes()) {
        const QByteArray value = received.option(code), option = char(code) + (char(value.size()) + value);
        require(filledUp(area, 308).contains(option), "what is received stands in the area");
    }
    for (const DhcpPacket* packet : std::initializer_list<const DhcpPacket*>{&received, &built}) {
        const Options options = optionsOf(*packet);
        bool isReadBack = true;
        const QByteArray written = head + areaOf(options, isReadBack), message = packet->serialize();
        require(message.startsWith(written), "options are written by the rule");
        require(!isReadBack || optionsOf(DhcpPacket(message)) == options, "options come back");
    }
    return 0;
}
