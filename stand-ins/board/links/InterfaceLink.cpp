#include "stand-ins/board/links/InterfaceLink.h"

#include "stand-ins/board/links/Rights.h"

#include <cerrno>
#include <fmt/core.h>
#include <pcap/pcap.h>
#include <stdexcept>

namespace emulated_board {

namespace {

// Frames wait here while the port has no room. Each takes a slot of the longest one, so these are about 2000,
// and of the 2 MiB of the library itself 127 would be left.
constexpr int receiveBufferBytes = 32 << 20;
// The sending handle takes nothing in.
constexpr int noBufferBytes = 64 << 10;
constexpr int readMaxMs = 1000;
constexpr int snapshotBytes = int(frameSizeMaxBytes);

bool isLoopback(const std::string& name)
{
    pcap_if_t* all = nullptr;
    char error[PCAP_ERRBUF_SIZE] = "";
    bool found = false;
    if (pcap_findalldevs(&all, error) != 0)
        return false;
    for (const pcap_if_t* each = all; each != nullptr; each = each->next)
        found = found || (name == each->name && (each->flags & PCAP_IF_LOOPBACK) != 0);
    pcap_freealldevs(all);
    return found;
}

/// Lets a handle take no frame in.
void closeForFrames(pcap* handle)
{
    bpf_program nothing{};
    if (pcap_compile(handle, &nothing, "less 0", 1, PCAP_NETMASK_UNKNOWN) != 0)
        throw std::runtime_error(pcap_geterr(handle));
    const int status = pcap_setfilter(handle, &nothing);
    pcap_freecode(&nothing);
    if (status != 0)
        throw std::runtime_error(pcap_geterr(handle));
}

} // namespace

void InterfaceLink::Closer::operator()(pcap* handle) const
{
    pcap_close(handle);
}

InterfaceLink::Handle InterfaceLink::activate(const std::string& interface, int bufferBytes)
{
    char error[PCAP_ERRBUF_SIZE] = "";
    Handle handle(pcap_create(interface.c_str(), error));
    if (!handle)
        throw std::runtime_error(error);
    pcap_set_snaplen(handle.get(), snapshotBytes);
    pcap_set_promisc(handle.get(), 1);
    pcap_set_immediate_mode(handle.get(), 1);
    pcap_set_timeout(handle.get(), readMaxMs);
    pcap_set_buffer_size(handle.get(), bufferBytes);
    const int status = pcap_activate(handle.get());
    if (status == PCAP_ERROR_PERM_DENIED || status == PCAP_ERROR_PROMISC_PERM_DENIED)
        throw std::runtime_error(fmt::format("no permission to listen at {} and to send there; {}", interface,
                                             adviceOnRights("net_raw")));
    if (status < 0) {
        const std::string what = pcap_statustostr(status), detail = pcap_geterr(handle.get());
        throw std::runtime_error(
            fmt::format("{}: {}{}", interface, what,
                        detail.empty() || detail == what ? "" : fmt::format(" ({})", detail)));
    }
    if (pcap_datalink(handle.get()) != DLT_EN10MB)
        throw std::runtime_error(interface + ": no Ethernet interface");
    return handle;
}

InterfaceLink::InterfaceLink(const std::string& interface, const std::string& portName, LineEnd& end)
    : DeviceLink(fmt::format("interface:{} at {}", interface, portName), end)
    , m_in(activate(interface, receiveBufferBytes))
    , m_out(activate(interface, noBufferBytes))
    , m_comesBack(pcap_setdirection(m_in.get(), PCAP_D_IN) != 0 || isLoopback(interface))
{
    closeForFrames(m_out.get());
    char error[PCAP_ERRBUF_SIZE] = "";
    if (pcap_setnonblock(m_out.get(), 1, error) != 0)
        throw std::runtime_error(error);
}

InterfaceLink::~InterfaceLink()
{
    stop();
}

DeviceLink::Outcome InterfaceLink::receive(std::vector<std::uint8_t>& frame)
{
    pcap_pkthdr* header = nullptr;
    const u_char* bytes = nullptr;
    const int result = pcap_next_ex(m_in.get(), &header, &bytes);
    if (result == 0 || result == PCAP_ERROR_BREAK)
        return Outcome::nothing;
    if (result != 1)
        return Outcome::gone;
    if (header->caplen < header->len)
        return Outcome::refused;
    if (m_comesBack && m_sent.takeBack(bytes, header->caplen))
        return Outcome::nothing;
    frame.assign(bytes, bytes + header->caplen);
    return Outcome::done;
}

DeviceLink::Outcome InterfaceLink::transmit(const std::uint8_t* frame, std::size_t size)
{
    if (m_comesBack)
        m_sent.add(frame, size); // ahead, since it is back at once
    if (pcap_inject(m_out.get(), frame, size) >= 0)
        return Outcome::done;
    const int reason = errno;
    if (m_comesBack)
        m_sent.takeBack(frame, size);
    switch (reason) {
    case EMSGSIZE:
    case EINVAL:
        return Outcome::refused;
    case EAGAIN:
    case ENOBUFS:
    case ENOMEM:
        return Outcome::noRoom;
    default:
        return Outcome::failed; // that the interface is gone is for the receiver to find
    }
}

void InterfaceLink::interrupt()
{
    pcap_breakloop(m_in.get());
}

std::uint64_t InterfaceLink::lostFrames() const
{
    pcap_stat statistics{};
    return pcap_stats(m_in.get(), &statistics) == 0 ? std::uint64_t(statistics.ps_drop) + statistics.ps_ifdrop
                                                    : 0;
}

std::string InterfaceLink::goneReason() const
{
    return pcap_geterr(m_in.get());
}

} // namespace emulated_board
