#include "host/describe/FramePrinter.h"

#include "host/describe/FrameDescriber.h"
#include "host/describe/Layers.h"
#include "packets/EthernetFrame.h"
#include "packets/IPv4Packet.h"

#include <array>
#include <string>
#include <utility>

namespace mesk::host {

namespace {

constexpr const char* lineFormat = "{:>7}  {:>13}  {:>5}  {:<21}  {:<21}  {:<8}  {}";

std::array<std::pair<const char*, ChecksumState>, 3> named(const FrameChecksums& checksums)
{
    return {{{"ipv4", checksums.ipv4}, {"icmp", checksums.icmp}, {"udp", checksums.udp}}};
}

} // namespace

FramePrinter::FramePrinter(fmt::memory_buffer& out, bool verify)
    : m_out(out)
    , m_verify(verify)
{
}

FrameChecksums FramePrinter::print(const CapturedFrame& captured)
{
    const EthernetFrame frame(captured.bytes);
    FrameChecksums checksums;
    if (m_verify && frame.etherType() == IPv4Packet::EtherType) {
        checksums = checkIPv4(viewOf(captured.bytes).substr(frame.headerSize()));
    }
    put(captured, frame, checksums);
    return checksums;
}

JsonFramePrinter::JsonFramePrinter(fmt::memory_buffer& out, bool verify)
    : FramePrinter(out, verify)
    , m_fields(out)
{
}

void JsonFramePrinter::put(const CapturedFrame& captured, const EthernetFrame& frame,
                           const FrameChecksums& checksums)
{
    constexpr std::size_t timeTextMaxBytes = 40;
    std::array<char, timeTextMaxBytes> time{};
    const auto timeEnd =
        fmt::format_to(time.data(), "{}.{:09}", captured.stamp.seconds, captured.stamp.nanoseconds);
    m_fields.openRecord();
    m_fields.number("number", captured.number);
    m_fields.text("time", {time.data(), static_cast<std::size_t>(timeEnd - time.data())});
    m_fields.number("bytes", static_cast<std::uint64_t>(captured.bytes.size()));
    m_fields.number("originalBytes", captured.stamp.originalBytes);
    m_fields.openList("layers");
    const std::string reason = FrameDescriber(&m_fields, nullptr).describe(frame, captured.bytes);
    m_fields.closeList();
    if (!reason.empty()) {
        m_fields.text("reason", reason);
    }
    if (checksums.ipv4 != ChecksumState::NotThere) {
        m_fields.openObject("checksums");
        for (const auto& [name, state] : named(checksums)) {
            if (state != ChecksumState::NotThere) {
                m_fields.text(name, nameOf(state));
            }
        }
        m_fields.closeObject();
    }
    m_fields.closeRecord();
}

TextFramePrinter::TextFramePrinter(fmt::memory_buffer& out, bool verify, bool tree)
    : FramePrinter(out, verify)
    , m_tree(tree)
    , m_fields(m_branches)
{
}

std::string TextFramePrinter::heading()
{
    return fmt::format(lineFormat, "NUMBER", "SECONDS", "BYTES", "SOURCE", "DESTINATION", "PROTOCOL", "INFO");
}

void TextFramePrinter::put(const CapturedFrame& captured, const EthernetFrame& frame,
                           const FrameChecksums& checksums)
{
    m_branches.clear();
    m_summary.info.clear();
    m_summary.reasons.clear();
    std::string reason =
        FrameDescriber(m_tree ? &m_fields : nullptr, &m_summary).describe(frame, captured.bytes);
    if (!reason.empty()) {
        m_summary.reasons.push_back(std::move(reason));
    }
    for (const std::string& each : m_summary.reasons) {
        m_summary.info += fmt::format("{}({})", m_summary.info.empty() ? "" : " ", each);
    }
    putLine(captured, checksums);
    m_out.append(m_branches.begin(), m_branches.end());
}

void TextFramePrinter::putLine(const CapturedFrame& captured, const FrameChecksums& checksums)
{
    const FrameStamp& stamp = captured.stamp;
    if (!m_firstStamp) {
        m_firstStamp = stamp;
    }
    constexpr double nsPerSecond = 1e9;
    const double seconds = static_cast<double>(stamp.seconds - m_firstStamp->seconds) +
                           (static_cast<double>(stamp.nanoseconds) - m_firstStamp->nanoseconds) / nsPerSecond;
    fmt::format_to(fmt::appender(m_out), lineFormat, captured.number, fmt::format("{:.6f}", seconds),
                   captured.bytes.size(), m_summary.source, m_summary.destination, m_summary.protocol,
                   m_summary.info);
    const char* separator = " [";
    for (const auto& [name, state] : named(checksums)) {
        if (state != ChecksumState::NotThere) {
            fmt::format_to(fmt::appender(m_out), "{}{} {}", separator, name, nameOf(state));
            separator = ", ";
        }
    }
    fmt::format_to(fmt::appender(m_out), "{}\n", checksums.ipv4 != ChecksumState::NotThere ? "]" : "");
}

} // namespace mesk::host
