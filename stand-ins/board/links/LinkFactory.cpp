#include "stand-ins/board/links/LinkFactory.h"

#include "stand-ins/board/links/CameraLink.h"
#include "stand-ins/board/links/FileLink.h"
#include "stand-ins/board/links/InterfaceLink.h"
#include "stand-ins/board/links/PairLink.h"
#include "stand-ins/board/links/TapLink.h"

#include <array>
#include <charconv>
#include <fmt/core.h>
#include <stdexcept>

namespace emulated_board {

namespace {

struct Request {
    PortNumber port;
    LineEnd& end;
    const std::string& text;      // the whole of it
    const std::string& arguments; // what is behind the colon
    const FindLineEnd& find;
};

std::vector<Plugged> makeNone(const Request& request)
{
    if (!request.arguments.empty())
        throw std::runtime_error("the link 'none' takes nothing behind it");
    std::vector<Plugged> result;
    result.push_back({request.port, "none", nullptr});
    return result;
}

/// Each port has a device of its own. Their addresses differ up to the 14th board, as far as a net of 256 has
/// room; those of later boards have the addresses of the first ones, and other MAC addresses.
emulated_camera::CameraSetup cameraAt(PortNumber port)
{
    constexpr std::uint32_t firstAddress = 0xC0A84D14; // 192.168.77.20
    constexpr std::uint32_t addressesPerBoard = 16;
    constexpr std::uint32_t boardsWithAddresses = 14;
    const std::uint32_t board = port.board % boardsWithAddresses;
    emulated_camera::CameraSetup setup;
    setup.mac = MacAddress(0x02, 0x4B, 0x00, 0x01, std::uint8_t(port.board), std::uint8_t(port.port));
    setup.serialNumber = QByteArray::fromStdString(fmt::format("EC{:02}{:02}", port.board, port.port));
    setup.persistentAddress = {IpAddress(firstAddress + port.port + addressesPerBoard * board), 24};
    return setup;
}

std::vector<Plugged> makeCamera(const Request& request)
{
    const auto setup = emulated_camera::parseCameraSetup(request.arguments, cameraAt(request.port));
    std::vector<Plugged> result;
    result.push_back({request.port, request.text, std::make_unique<CameraLink>(setup, request.end)});
    return result;
}

std::vector<Plugged> makePair(const Request& request)
{
    const PortNumber other = parsePortNumber(request.arguments);
    LineEnd* const otherEnd = request.find(other);
    if (otherEnd == nullptr)
        throw std::runtime_error(fmt::format("no port {}.{} to pair with", other.board, other.port));
    auto ends = PairLink::join(request.end, *otherEnd);
    const auto name = [](PortNumber port) { return fmt::format("pair:{}.{}", port.board, port.port); };
    std::vector<Plugged> result;
    result.push_back({request.port, name(other), std::move(ends.first)});
    if (ends.second)
        result.push_back({other, name(request.port), std::move(ends.second)});
    return result;
}

std::vector<Plugged> makeFile(const Request& request)
{
    const std::size_t comma = request.arguments.find(',');
    const std::string in = request.arguments.substr(0, comma);
    const std::string out = comma == std::string::npos ? "" : request.arguments.substr(comma + 1);
    std::vector<Plugged> result;
    result.push_back({request.port, request.text, std::make_unique<FileLink>(in, out, request.end)});
    return result;
}

/// A link that has its one end at the port and takes the name of a device.
template <typename DeviceLink>
std::vector<Plugged> makeDevice(const Request& request)
{
    if (request.arguments.empty())
        throw std::runtime_error("the name of a device stands behind the colon");
    const std::string portName = fmt::format("port {}.{}", request.port.board, request.port.port);
    std::vector<Plugged> result;
    result.push_back(
        {request.port, request.text, std::make_unique<DeviceLink>(request.arguments, portName, request.end)});
    return result;
}

struct Kind {
    const char* name;
    const char* form; // as it is told to users
    std::vector<Plugged> (*make)(const Request& request);
};

// A new kind of link is one more line here.
constexpr std::array<Kind, 6> kinds{{
    {"none", "none", makeNone},
    {"camera", "camera[:OPTIONS]", makeCamera},
    {"interface", "interface:NAME", makeDevice<InterfaceLink>},
    {"tap", "tap:NAME", makeDevice<TapLink>},
    {"pair", "pair:BOARD.PORT", makePair},
    {"file", "file:IN.pcap,OUT.pcap", makeFile},
}};

std::string allForms()
{
    std::string forms;
    for (const Kind& kind : kinds)
        forms.append(forms.empty() ? "" : ", ").append(kind.form);
    return forms;
}

} // namespace

PortNumber parsePortNumber(const std::string& text)
{
    PortNumber number{};
    const char* const end = text.data() + text.size();
    const auto board = std::from_chars(text.data(), end, number.board);
    if (board.ec == std::errc() && board.ptr != end && *board.ptr == '.') {
        const auto port = std::from_chars(board.ptr + 1, end, number.port);
        if (port.ec == std::errc() && port.ptr == end)
            return number;
    }
    throw std::runtime_error(fmt::format("'{}' is not a port in the form BOARD.PORT", text));
}

std::vector<Plugged> makeLinks(PortNumber port, const std::string& text, const FindLineEnd& find)
{
    LineEnd* const end = find(port);
    if (end == nullptr)
        throw std::runtime_error(fmt::format("no port {}.{}", port.board, port.port));
    const std::size_t colon = text.find(':');
    const std::string name = text.substr(0, colon);
    const std::string arguments = colon == std::string::npos ? "" : text.substr(colon + 1);
    for (const Kind& kind : kinds) {
        if (name == kind.name)
            return kind.make({port, *end, text, arguments, find});
    }
    throw std::runtime_error(fmt::format("unknown link '{}', known are: {}", text, allForms()));
}

} // namespace emulated_board
