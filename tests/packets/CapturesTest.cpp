#include "gvcp/GVCPActionCommandPacket.h"
#include "gvcp/GVCPDiscoveryAckPacket.h"
#include "gvcp/GVCPEventCommandPacket.h"
#include "gvcp/GVCPEventDataCommandPacket.h"
#include "gvcp/GVCPMemoryReadCommandPacket.h"
#include "gvcp/GVCPMemoryWriteCommandPacket.h"
#include "gvcp/GVCPPacketResendCommandPacket.h"
#include "gvcp/GVCPRegisterReadCommandPacket.h"
#include "gvcp/GVCPRegisterWriteCommandPacket.h"
#include "packets/ArpPacket.h"
#include "packets/DhcpPacket.h"
#include "packets/EthernetFrame.h"
#include "packets/IPv4Packet.h"
#include "packets/IcmpPacket.h"
#include "packets/InternetChecksum.h"
#include "packets/UdpPacket.h"
#include "tests/packets/TestBytes.h"

#include <gtest/gtest.h>
#include <pcap/pcap.h>

#include <QDir>
#include <QFile>
#include <QtEndian>

#include <functional>
#include <map>
#include <memory>

// Recorded traffic: what is read in each frame here is what another program reads there, and what is written
// is what came.
namespace {
using Command = GVCPCommandPacket;
using Ack = GVCPAckPacket;
using Found = GVCPDiscoveryAckPacket;
using ReadReg = GVCPRegisterReadCommandPacket;
using WriteReg = GVCPRegisterWriteCommandPacket;
using ReadMem = GVCPMemoryReadCommandPacket;
using WriteMem = GVCPMemoryWriteCommandPacket;
using Resend = GVCPPacketResendCommandPacket;
using Event = GVCPEventCommandPacket;
using Data = GVCPEventDataCommandPacket;
using Act = GVCPActionCommandPacket;

/// All layers of a frame.
struct Walk {
    explicit Walk(const QByteArray& bytes)
    {
        add(new EthernetFrame(bytes));
        add(as<EthernetFrame>()->internetPacket());
        if (const auto* ip = as<IPv4Packet>())
            add(ip->transportPacket());
        const auto* udp = as<UdpPacket>();
        if (udp != nullptr)
            add(udp->applicationPacket());
        // The commands whose class is the caller's choice.
        if (const auto* command = as<Command>()) {
            const quint16 code = command->command();
            add(code == 0x40 ? new Resend(udp->payload()) : nullptr);
            add(code == 0x84 ? new ReadMem(udp->payload()) : nullptr);
            add(code == 0x86 ? new WriteMem(udp->payload()) : nullptr);
            add(code == 0xc0 ? new Event(udp->payload()) : nullptr);
            add(code == 0xc2 ? new Data(udp->payload()) : nullptr);
        }
    }
    void add(const NetworkPacket* packet) { layers.emplace_back(packet); }
    template <typename Packet>
    const Packet* as() const // null if there is no layer of the class
    {
        for (const auto& layer : layers)
            if (const auto* packet = dynamic_cast<const Packet*>(layer.get()))
                return packet;
        return nullptr;
    }
    std::vector<std::unique_ptr<const NetworkPacket>> layers;
};

/// What the other program says of a frame: the cells of its columns.
struct Row : std::map<QByteArray, QByteArray> {
    QByteArray at(const QByteArray& column) const
    {
        return count(column) ? find(column)->second : QByteArray();
    }
    bool is(const char* column, const QByteArray& text) const { return at(column) == text; }
    bool has(const char* column, const QByteArray& text) const { return at(column).contains(text); }
};

const auto dec = [](quint64 value) { return QByteArray::number(value); };
template <int Digits>
QByteArray hexa(quint64 value)
{
    return "0x" + QByteArray::number(value, 16).rightJustified(Digits, '0');
}
const auto text = [](const auto& address) { return address.toByteArray(); };
const auto mac = [](const MacAddress& address) { return address.toByteArray(":"); };
const auto utf8 = [](const QByteArray& bytes) { return QString::fromUtf8(bytes).toUtf8(); };
const auto asHex = [](const QByteArray& bytes) { return bytes.toHex(); };
const auto asIs = [](const QByteArray& bytes) { return bytes; };
const auto blockId = [](quint64 value) { return value > 0xffff ? hexa<16>(value) : hexa<4>(value); };

using Get = std::function<QByteArray(const Walk&, const Row&)>;

template <typename Packet, typename Getter, typename Format>
Get of(Getter getter, Format format)
{
    return [=](const Walk& walk, const Row&) {
        const auto* packet = walk.as<Packet>();
        return packet != nullptr ? format(std::invoke(getter, *packet)) : QByteArray();
    };
}
template <typename T, typename Packet, typename Format>
Get of(T (Packet::*getter)() const, Format format)
{
    return of<Packet, T (Packet::*)() const>(getter, format);
}

template <typename Packet, typename T, typename Format>
Get each(quint16 (Packet::*size)() const, T (Packet::*getter)(quint32) const, Format format)
{
    const auto join = [=](const Packet& packet) {
        QByteArrayList texts;
        for (quint32 i = 0; i < (packet.*size)(); ++i)
            texts += format((packet.*getter)(i));
        return texts.join('|') + "";
    };
    return of<Packet>(join, asIs);
}
template <typename T, typename Format>
Get events(T (Event::*ofEvent)(quint32) const, T (Data::*ofData)() const, Format format)
{
    return [=](const Walk& walk, const Row& row) {
        return walk.as<Event>() ? each(&Event::eventCount, ofEvent, format)(walk, row)
                                : of(ofData, format)(walk, row);
    };
}

// Types in wire order, where 0 is the padding, then those that only we know, then the values in wire order.
QByteArray options(const Walk& walk, const Row& row)
{
    const auto* dhcp = walk.as<DhcpPacket>();
    if (dhcp == nullptr)
        return {};
    QByteArrayList types, values;
    for (const QByteArray& type : row.at("dhcp.option.type").split('|'))
        if (const auto code = quint8(type.toUInt()); code == 0) {
            types += type;
        } else if (dhcp->hasOption(code)) {
            types += type;
            values += dhcp->option(code).toHex();
        }
    for (const quint8 code : dhcp->optionCodes())
        if (!types.contains(dec(code)))
            types += dec(code);
    return (types + values).join('|');
}

QByteArray udpChecksum(const Walk& walk, const Row&)
{
    const auto* ip = walk.as<IPv4Packet>();
    const auto* udp = walk.as<UdpPacket>();
    return udp ? hexa<4>(udp->checksum(ip->sourceAddress(), ip->destinationAddress())) : QByteArray();
}

const auto isTagged = [](const EthernetFrame& frame) {
    return frame.headerSize() == EthernetFrame::taggedHeaderSizeBytes;
};

/// Which frames count: all (where the packet has no such value, the cell is empty), those whose packet has
/// the value, those that have a cell too because the other program tells the value of some messages only.
enum Count { Always, IfThere, IfTold };

struct Column {
    const char* name;
    Get get; // gives a null array if the packet has no such value
    Count count = Always;
};

const Column columns[] = {
    {"eth.dst", of(&EthernetFrame::destination, mac)},
    {"eth.src", of(&EthernetFrame::source, mac)},
    {"eth.type",
     of<EthernetFrame>([](auto& p) { return isTagged(p) ? EthernetFrame::vlanTagType : p.etherType(); },
                       hexa<4>)},
    {"vlan.etype",
     of<EthernetFrame>([](auto& p) { return isTagged(p) ? hexa<4>(p.etherType()) : QByteArray(); }, asIs)},
    {"arp.hw.size", of(&ArpPacket::hardwareAddressSize, dec)},
    {"arp.proto.size", of(&ArpPacket::protocolAddressSize, dec)},
    {"arp.opcode", of(&ArpPacket::operation, dec)},
    {"arp.src.hw_mac", of(&ArpPacket::senderMacAddress, mac)},
    {"arp.src.proto_ipv4", of(&ArpPacket::sourceAddress, text)},
    {"arp.dst.hw_mac", of(&ArpPacket::targetMacAddress, mac)},
    {"arp.dst.proto_ipv4", of(&ArpPacket::destinationAddress, text)},
    {"ip.hdr_len", of(&IPv4Packet::headerSize, dec)},
    {"ip.len", of(&IPv4Packet::totalSize, dec)},
    {"ip.proto", of(&IPv4Packet::protocol, dec)},
    {"ip.src", of(&IPv4Packet::sourceAddress, text)},
    {"ip.dst", of(&IPv4Packet::destinationAddress, text)},
    {"icmp.type", of(&IcmpPacket::type, dec)},
    {"icmp.code", of(&IcmpPacket::code, dec)},
    {"icmp.checksum", of(&IcmpPacket::checksum, hexa<4>)},
    {"udp.srcport", of(&UdpPacket::sourcePort, dec)},
    {"udp.dstport", of(&UdpPacket::destinationPort, dec)},
    {"udp.length", of(&UdpPacket::length, dec)},
    {"udp.checksum", udpChecksum},
    {"udp.payload", of(&UdpPacket::payload, asHex)},
    {"dhcp.type", of<DhcpPacket>([](auto& p) { return p.isRequest() ? 1U : 2U; }, dec)},
    {"dhcp.id", of<DhcpPacket>([](auto& p) { return qToBigEndian(p.xid()); }, hexa<8>)},
    {"dhcp.flags", of(&DhcpPacket::flags, hexa<4>)},
    {"dhcp.ip.client", of(&DhcpPacket::ciaddr, text)},
    {"dhcp.ip.your", of(&DhcpPacket::yiaddr, text)},
    {"dhcp.ip.relay", of(&DhcpPacket::giaddr, text)},
    {"dhcp.hw.mac_addr", of<DhcpPacket>([](auto& p) { return MacAddress(p.chaddr().left(6)); }, mac)},
    {"dhcp.hw.addr_padding", of<DhcpPacket>([](auto& p) { return p.chaddr().mid(6); }, asHex)},
    {"dhcp.option.type+dhcp.option.value", options},
    {"gvcp.cmd.req_id", of(&GVCPPacket::requestId, hexa<4>)},
    {"gvcp.cmd.payloadlength", of<GVCPPacket>(&GVCPPacket::payloadSize, hexa<4>)},
    {"gvcp.cmd.command", of(&Command::command, hexa<4>)},
    {"gvcp.cmd.flags", of(&Command::flags, hexa<2>)},
    {"gvcp.cmd.flag.64bitid", of<Command>([](auto& p) { return p.hasFlag(Command::ExtendedIds); }, dec),
     IfTold},
    {"gvcp.ack", of(&Ack::acknowledge, hexa<4>)},
    {"gvcp.cmd.status", of(&Ack::status, hexa<4>)},
    {"gvcp.cmd.readreg.bootstrapregister+gvcp.bootstrap.custom.register.write",
     each(&ReadReg::addressCount, &ReadReg::address, hexa<8>), IfThere},
    {"gvcp.cmd.writereg.bootstrapregister+gvcp.bootstrap.custom.register.write",
     each(&WriteReg::registerCount, &WriteReg::address, hexa<8>), IfThere},
    {"gvcp.bootstrap.custom.register.value",
     of<WriteReg>([](auto& p) { return p.value(p.registerCount() - 1U); }, hexa<8>), IfTold},
    {"gvcp.cmd.readmem.bootstrapregister+gvcp.bootstrap.custom.register.write",
     of(&ReadMem::address, hexa<8>), IfThere},
    {"gvcp.cmd.readmem.count", of(&ReadMem::count, hexa<4>)},
    {"gvcp.cmd.readmem.data", of<Ack>([](auto& p) { return p.payload().mid(4); }, asHex), IfTold},
    {"gvcp.cmd.writemem.data", of(&WriteMem::data, asHex), IfTold},
    {"gvcp.cmd.resend.streamchannelindex", of(&Resend::streamChannelIndex, hexa<4>)},
    {"gvcp.cmd.resend.blockid", of(&Resend::blockId, hexa<4>)},
    {"gvcp.cmd.resend.firstpacketid", of(&Resend::firstPacketId, hexa<6>)},
    {"gvcp.cmd.resend.lastpacketid", of(&Resend::lastPacketId, hexa<6>)},
    {"gvcp.cmd.event.devicespecificid", events(&Event::eventId, &Data::eventId, hexa<4>)},
    {"gvcp.cmd.event.streamchannelindex",
     events(&Event::streamChannelIndex, &Data::streamChannelIndex, hexa<4>)},
    {"gvcp.cmd.event.blockid+gvcp.event_timestamp", events(&Event::blockId, &Data::blockId, blockId)},
    {"gvcp.cmd.event.timestamp", events(&Event::timestamp, &Data::timestamp, hexa<16>)},
    {"gvcp.cmd.eventdata.data", of(&Data::data, asHex), IfTold},
    {"gvcp.cmd.action.devicekey", of(&Act::deviceKey, hexa<8>)},
    {"gvcp.cmd.action.groupkey", of(&Act::groupKey, hexa<8>)},
    {"gvcp.cmd.action.groupmask", of(&Act::groupMask, hexa<8>)},
    {"gvcp.bootstrap.specversion",
     of<Found>([](auto& p) { return quint32(p.specVersionMajor()) << 16 | p.specVersionMinor(); }, hexa<8>)},
    {"gvcp.ack.discovery.devicemode", of(&Found::deviceMode, hexa<8>)},
    {"gvcp.cmd.discovery.devicemacaddress", of(&Found::macAddress, mac)},
    {"gvcp.bootstrap.supportedipconfig", of(&Found::ipConfigOptions, hexa<8>)},
    {"gvcp.bootstrap.currentipconfig", of(&Found::ipConfigCurrent, hexa<8>)},
    {"gvcp.bootstrap.currentip", of(&Found::currentIp, text)},
    {"gvcp.bootstrap.currentsubnetmask", of<Found>([](auto& p) { return IpAddress(p.subnetMask()); }, text)},
    {"gvcp.bootstrap.currentdefaultgateway", of(&Found::defaultGateway, text)},
    {"gvcp.bootstrap.manufacturername", of(&Found::manufacturerName, utf8), IfThere},
    {"gvcp.bootstrap.modelname", of(&Found::modelName, utf8), IfThere},
    {"gvcp.bootstrap.deviceversion", of(&Found::deviceVersion, utf8), IfThere},
    {"gvcp.bootstrap.manufacturerspecificinfo", of(&Found::manufacturerInfo, utf8), IfThere},
    {"gvcp.bootstrap.serialnumber", of(&Found::serialNumber, utf8), IfThere}};

enum Action { Skip, First, None }; // what is taken of a cell instead of all

/// Where the other program means something else in the columns of this beginning: in frames with a text in a
/// cell.
struct Exception {
    const char* columns;
    Action action;
    const char *cell, *text, *reason;
};
// A message with 4 bytes of payload whose length field says 8, and what a datagram with a wrong key is there.
const char wrongLength[] = "420100800008000200000000", wrongKey[] = "udp:data";
const Exception exceptions[] = {
    {"ip.", First, "frame.protocols", "icmp:ip", "an ICMP error quotes a datagram"},
    {"udp.", None, "frame.protocols", "icmp:ip", "what an ICMP error quotes is its payload"},
    {"gvcp.", None, "frame.protocols", "icmp:ip", "what an ICMP error quotes is its payload"},
    {"udp.", Skip, "frame.protocols", "ip:data", "a later fragment is read as the first one"},
    {"icmp.", Skip, "frame.protocols", "ip:data", "a later fragment is read as the first one"},
    {"udp.length", Skip, "ip.flags.mf", "1", "here it is the size of what is there"},
    {"dhcp.hw.mac", First, "dhcp.option.type", "61", "the client identifier has it too"},
    {"gvcp.", None, "gvcp.cmd.command", "0x7ffe", "no class"},
    {"gvcp.", None, "gvcp.ack", "0x0089", "no class"},
    {"gvcp.", Skip, "frame.protocols", wrongKey, "no message there, an empty one here"},
    {"gvcp.", Skip, "udp.payload", wrongLength, "nothing is taken of it"},
    {"gvcp.cmd.resend.", Skip, "gvcp.cmd.flag.64bitid", "1", "a layout that is not known here"},
    {"gvcp.cmd.event.stream", First, "_ws.malformed", "GVCP", "it reads events in the data too"},
    {"gvcp.bootstrap.manufacturers", Skip, "gvcp.bootstrap.serialnumber", "STRICT1",
     "it reads on into the next text"}};

/// Calls @p use for every frame of every capture.
template <typename Use>
void forEachFrame(Use use)
{
    const QDir folder(QStringLiteral(CAPTURES_DIR));
    const QStringList names = folder.entryList({QStringLiteral("*.pcap")});
    ASSERT_FALSE(names.isEmpty());
    for (const QString& name : names) {
        char error[PCAP_ERRBUF_SIZE] = "";
        const std::unique_ptr<pcap_t, decltype(&pcap_close)> pcap(
            pcap_open_offline(folder.filePath(name).toUtf8().constData(), error), &pcap_close);
        ASSERT_TRUE(pcap) << error;
        QFile table(folder.filePath(name.chopped(5) + QStringLiteral(".tsv")));
        ASSERT_TRUE(table.open(QIODevice::ReadOnly));
        const QByteArrayList titles = table.readLine().chopped(1).split('\t');
        pcap_pkthdr* header = nullptr;
        const u_char* bytes = nullptr;
        while (pcap_next_ex(pcap.get(), &header, &bytes) == 1) {
            const QByteArrayList values = table.readLine().chopped(1).split('\t');
            ASSERT_EQ(values.size(), titles.size()) << name.toStdString();
            Row row;
            for (int i = 0; i < titles.size(); ++i)
                row[titles[i]] = values[i];
            SCOPED_TRACE(name.toStdString() + " frame " + values[0].toStdString());
            const QByteArray frame(reinterpret_cast<const char*>(bytes), int(header->caplen));
            use(Walk(frame), row, frame);
        }
        EXPECT_TRUE(table.atEnd()) << name.toStdString();
    }
}
} // namespace

TEST(Captures, areReadAsAnotherProgramReadsThem)
{
    std::map<QByteArray, int> compared;
    std::map<const Exception*, int> used;
    forEachFrame([&](const Walk& walk, const Row& row, const QByteArray&) {
        for (const Column& column : columns) {
            QByteArray told;
            for (const QByteArray& name : QByteArray(column.name).split('+'))
                told += (told.isEmpty() || row.at(name).isEmpty() ? "" : "|") + row.at(name);
            const QByteArray ours = column.get(walk, row);
            bool skipped =
                (column.count != Always && ours.isNull()) || (column.count == IfTold && told.isEmpty());
            for (const Exception& rule : exceptions)
                if (!skipped && QByteArray(column.name).startsWith(rule.columns) &&
                    row.has(rule.cell, rule.text)) {
                    used[&rule] += ours != told;
                    skipped = rule.action == Skip;
                    told = rule.action == First ? told.split('|')[0] : QByteArray();
                }
            if (skipped)
                continue;
            EXPECT_EQ(ours, told) << column.name;
            compared[column.name] += !told.isEmpty();
        }
    });
    for (const Column& column : columns)
        EXPECT_GT(compared[column.name], 0) << column.name;
    for (const Exception& rule : exceptions)
        EXPECT_GT(used[&rule], 0) << rule.reason;
}

namespace {
quint16 sumOf(const QByteArray& header)
{
    return foldedSum(sumOfWords(header.constData(), std::size_t(header.size())));
}

void expectDatagramRebuilt(const Walk& walk, const IPv4Packet& ip, const Row& row, const QByteArray& came)
{
    const auto bytesOf = [&](const TransportPacket& packet) {
        return packet.serialize(ip.sourceAddress(), ip.destinationAddress());
    };
    const auto* udp = walk.as<UdpPacket>();
    const bool isCutShort = udp != nullptr && row.is("ip.flags.mf", "1");
    EXPECT_EQ(bytesOf(*walk.as<TransportPacket>()), isCutShort ? QByteArray() : came);
    if (udp != nullptr && !isCutShort) {
        const bool isSummed = !row.is("udp.checksum.status", "3");
        const UdpPacket built(udp->sourcePort(), udp->destinationPort(), udp->payload(), isSummed);
        QByteArray expected = came;
        const QByteArray message = row.at("_ws.expert.message");
        if (row.is("udp.checksum.status", "0")) // "Bad checksum [should be 0x1234]"
            expected.replace(6, 2, QByteArray::fromHex(message.mid(message.indexOf("0x") + 2, 4)));
        EXPECT_EQ(bytesOf(built), expected);
    } else if (const auto* icmp = walk.as<IcmpPacket>();
               icmp != nullptr && row.is("icmp.checksum.status", "1")) {
        EXPECT_EQ(bytesOf(IcmpPacket(icmp->type(), icmp->code(), icmp->payload())), came);
    }
}

/// The record that came, filled up and with the options in our order.
QByteArray rewritten(const DhcpPacket& dhcp, const QByteArray& came)
{
    QByteArray type, others;
    for (const quint8 code : dhcp.optionCodes())
        (code == 53 ? type : others) += char(code) + (char(dhcp.option(code).size()) + dhcp.option(code));
    const QByteArray area = type + others + '\xff';
    return (came + QByteArray(548, '\0')).left(548).replace(240, area.size(), area);
}

void expectMessageRebuilt(const Walk& walk, const Row& row, const QByteArray& came)
{
    if (const auto* dhcp = walk.as<DhcpPacket>()) {
        EXPECT_EQ(dhcp->serialize(), rewritten(*dhcp, came));
    }
    if (const auto* gvcp = walk.as<GVCPPacket>()) {
        // Nothing is valid with another key or length, or with the id 0.
        const bool valid = !row.has("frame.protocols", wrongKey) && !row.has("udp.payload", wrongLength) &&
                           !row.is("gvcp.cmd.req_id", "0x0000");
        EXPECT_EQ(gvcp->isValid(), valid);
        QByteArray expected = valid ? came : QByteArray();
        if (walk.as<Found>() != nullptr)
            for (const int textEnd : {104, 136, 168, 216, 232, 248}) // every text ends with a zero
                expected[8 + textEnd - 1] = 0;
        EXPECT_EQ(gvcp->serialize(), expected);
    }
    if (const auto* p = walk.as<ReadMem>()) {
        EXPECT_EQ(ReadMem(p->requestId(), p->address(), p->count(), p->isAckRequired()).serialize(), came);
    } else if (const auto* w = walk.as<WriteMem>(); w != nullptr && w->data().size() % 4 == 0) {
        WriteMem built(w->requestId(), w->address(), w->data());
        built.setFlags(w->flags());
        EXPECT_EQ(built.serialize(), came);
    }
}
} // namespace

TEST(Captures, areWrittenAsTheyCame)
{
    forEachFrame([](const Walk& walk, const Row& row, const QByteArray& bytes) {
        EXPECT_EQ(walk.as<EthernetFrame>()->serialize(), bytes);
        const QByteArray packet = bytes.mid(int(walk.as<EthernetFrame>()->headerSize()));
        const auto* ip = walk.as<IPv4Packet>();
        if (ip == nullptr) {
            EXPECT_EQ(walk.as<ArpPacket>()->serialize(), packet.left(28));
            return;
        }
        // Another header, whose checksum holds as that of the one that came does.
        const int headerSize = int(ip->headerSize());
        const QByteArray payload = packet.mid(headerSize, int(ip->totalSize()) - headerSize);
        const QByteArray written = ip->serialize();
        EXPECT_EQ(sumOf(packet.left(headerSize)), 0xffff);
        EXPECT_EQ(sumOf(written.left(20)), 0xffff);
        QByteArray header =
            hex("4500 0000 0000 4000 ff") + packet[9] + written.mid(10, 2) + packet.mid(12, 8);
        qToBigEndian(quint16(20 + payload.size()), header.data() + 2);
        EXPECT_EQ(written, header + payload);
        if (row.has("frame.protocols", "ip:data"))
            return;
        expectDatagramRebuilt(walk, *ip, row, payload);
        if (walk.as<UdpPacket>() != nullptr)
            expectMessageRebuilt(walk, row, payload.mid(8));
    });
}
