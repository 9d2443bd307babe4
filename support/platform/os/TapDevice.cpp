#include "support/platform/os/TapDevice.h"

#include "support/platform/os/Event.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/if_ether.h>
#include <linux/if_tun.h>
#include <linux/rtnetlink.h>
#include <mutex>
#include <net/if.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace kivo::templates::platform::os {

namespace {

// IEEE 802.3 and 802.1Q: two addresses and a type; a tag stands before the type.
constexpr std::size_t typeAt = 12;
constexpr std::size_t ethernetHeaderBytes = 14;
constexpr std::size_t tagBytes = 4;
constexpr unsigned waitMaxMs = 60000;
constexpr const char* tapDriver = "/dev/net/tun";

class Descriptor {
public:
    explicit Descriptor(int number)
        : m_number(number)
    {
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    int number() const { return m_number; }

private:
    const int m_number;
};

/// What a call left in `errno`, with what was to be done.
class Failure : public std::system_error {
public:
    explicit Failure(const std::string& what)
        : std::system_error(errno, std::generic_category(), what)
    {
    }
};

/// The request for the state of one interface, and room for the answer.
struct LinkRequest {
    nlmsghdr header;
    ifinfomsg info;
};
constexpr std::size_t linkAnswerMaxBytes = 8192;

std::uint64_t lostOf(const nlmsghdr* answer)
{
    const auto* info = static_cast<const ifinfomsg*>(NLMSG_DATA(answer));
    auto rest = static_cast<unsigned>(IFLA_PAYLOAD(answer));
    for (const rtattr* each = IFLA_RTA(info); RTA_OK(each, rest); each = RTA_NEXT(each, rest)) {
        rtnl_link_stats64 statistics{};
        if (each->rta_type == IFLA_STATS64 && RTA_PAYLOAD(each) >= sizeof(statistics)) {
            std::memcpy(&statistics, RTA_DATA(each), sizeof(statistics));
            return statistics.tx_dropped;
        }
    }
    return 0;
}

TapDevice::Outcome outcomeOf(int error)
{
    switch (error) {
    case EAGAIN:
    case EINTR:
        return TapDevice::Outcome::Nothing;
    case ENOMEM:
    case ENOBUFS:
        return TapDevice::Outcome::NoRoom;
    case EINVAL:
        return TapDevice::Outcome::Refused;
    case EBADFD: // the descriptor has lost its device
    case ENODEV:
        return TapDevice::Outcome::Gone;
    default:
        return TapDevice::Outcome::Failed;
    }
}

} // namespace

struct TapDevice::D {
    void attach(const std::string& name);
    void bringUp();
    std::size_t frameMaxBytes(const std::uint8_t* frame) const;
    std::uint64_t dropped();
    ifreq request() const
    {
        ifreq empty{};
        name.copy(empty.ifr_name, IFNAMSIZ - 1);
        return empty;
    }

    std::string name;
    // Made at once, so that they stay in the network namespace of the device wherever they are asked from.
    const Descriptor device{::open(tapDriver, O_RDWR | O_NONBLOCK | O_CLOEXEC)};
    const int deviceError = errno;
    const Descriptor control{::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    const Descriptor netlink{::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE)};
    const Descriptor interrupted{::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
    CriticalSection netlinkLock;
    unsigned index = 0;
    std::uint64_t droppedBefore = 0;
};

void TapDevice::D::attach(const std::string& asked)
{
    // Of other names the system makes up one of its own.
    if (asked.empty() || asked.size() >= IFNAMSIZ || asked.find_first_of("%/: \t\n") != std::string::npos)
        throw std::system_error(std::make_error_code(std::errc::invalid_argument),
                                "'" + asked + "' is no name for an interface");
    name = asked;
    if (device.number() < 0) {
        errno = deviceError;
        throw Failure(tapDriver);
    }
    if (control.number() < 0 || netlink.number() < 0 || interrupted.number() < 0)
        throw Failure("no descriptor");
    ifreq wanted = request();
    wanted.ifr_flags = IFF_TAP | IFF_NO_PI;
    if (::ioctl(device.number(), TUNSETIFF, &wanted) != 0) {
        const char* const reason = errno == EINVAL
                                       ? "there is an interface of that name that is no TAP device"
                                   : errno == EBUSY ? "a program is attached to it already"
                                                    : "it can't be made or attached to";
        throw Failure(reason);
    }
    ifreq found = request();
    if (::ioctl(control.number(), SIOCGIFINDEX, &found) != 0)
        throw Failure("it has no index");
    index = static_cast<unsigned>(found.ifr_ifindex);
    droppedBefore = dropped();
}

void TapDevice::D::bringUp()
{
    ifreq flags = request();
    if (::ioctl(control.number(), SIOCGIFFLAGS, &flags) != 0)
        throw Failure("its state can't be read");
    if ((flags.ifr_flags & IFF_UP) != 0)
        return; // whoever owns a device that is up needs no right to change it
    flags.ifr_flags = static_cast<short>(flags.ifr_flags | IFF_UP);
    if (::ioctl(control.number(), SIOCSIFFLAGS, &flags) != 0)
        throw Failure("it can't be brought up");
}

/// The longest frame that the interface takes. Asked each time: whoever runs the machine may change the MTU.
std::size_t TapDevice::D::frameMaxBytes(const std::uint8_t* frame) const
{
    ifreq answer = request();
    if (::ioctl(control.number(), SIOCGIFMTU, &answer) != 0)
        return SIZE_MAX; // the write will tell why
    const auto type = static_cast<unsigned>(frame[typeAt] << 8U | frame[typeAt + 1]);
    const bool isTagged = type == ETH_P_8021Q || type == ETH_P_8021AD;
    return static_cast<std::size_t>(answer.ifr_mtu) + ethernetHeaderBytes + (isTagged ? tagBytes : 0);
}

std::uint64_t TapDevice::D::dropped()
{
    LinkRequest asked{};
    asked.header.nlmsg_len = sizeof(asked);
    asked.header.nlmsg_type = RTM_GETLINK;
    asked.header.nlmsg_flags = NLM_F_REQUEST;
    asked.info.ifi_index = static_cast<int>(index);
    alignas(nlmsghdr) std::array<char, linkAnswerMaxBytes> answer{};
    const std::lock_guard<CriticalSection> lock(netlinkLock);
    if (::send(netlink.number(), &asked, sizeof(asked), 0) != static_cast<ssize_t>(sizeof(asked)))
        return 0;
    const ssize_t size = ::recv(netlink.number(), answer.data(), answer.size(), MSG_DONTWAIT);
    const auto* const header = reinterpret_cast<const nlmsghdr*>(answer.data());
    return size > 0 && NLMSG_OK(header, static_cast<unsigned>(size)) && header->nlmsg_type == RTM_NEWLINK
               ? lostOf(header)
               : 0;
}

TapDevice::Opening TapDevice::open(const std::string& name)
{
    Opening opening;
    try {
        auto parts = std::make_unique<D>();
        parts->attach(name);
        parts->bringUp();
        opening.device.reset(new TapDevice(std::move(parts)));
    } catch (const std::system_error& error) {
        opening.errorText = error.what();
        opening.isBusy = error.code() == std::errc::device_or_resource_busy;
        opening.isForbidden = error.code() == std::errc::operation_not_permitted ||
                              error.code() == std::errc::permission_denied;
    }
    return opening;
}

TapDevice::TapDevice(std::unique_ptr<D> parts)
    : d(std::move(parts))
{
}

TapDevice::~TapDevice() = default;

TapDevice::Outcome TapDevice::read(void* buffer, std::size_t size, std::size_t& count, unsigned timeoutMs)
{
    std::array<pollfd, 2> waited{{{d->device.number(), POLLIN, 0}, {d->interrupted.number(), POLLIN, 0}}};
    const int ready = ::poll(waited.data(), waited.size(), static_cast<int>(std::min(timeoutMs, waitMaxMs)));
    if (ready <= 0 || waited[1].revents != 0)
        return Outcome::Nothing;
    const ssize_t got = ::read(d->device.number(), buffer, size);
    if (got < 0)
        return outcomeOf(errno);
    count = static_cast<std::size_t>(got);
    return Outcome::Done;
}

TapDevice::Outcome TapDevice::write(const void* frame, std::size_t size)
{
    if (size < ethernetHeaderBytes || size > d->frameMaxBytes(static_cast<const std::uint8_t*>(frame)))
        return Outcome::Refused;
    return ::write(d->device.number(), frame, size) >= 0 ? Outcome::Done : outcomeOf(errno);
}

void TapDevice::interrupt()
{
    const std::uint64_t one = 1;
    (void)!::write(d->interrupted.number(), &one, sizeof(one)); // full: it is set already
}

std::uint64_t TapDevice::lostFrames() const
{
    const std::uint64_t now = d->dropped();
    return now - std::min(now, d->droppedBefore);
}

} // namespace kivo::templates::platform::os
