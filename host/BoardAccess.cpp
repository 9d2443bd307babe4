#include "host/BoardAccess.h"

#include "host/Failure.h"
#include "support/platform/os/Module.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>

namespace mesk::host {

namespace os = kivo::templates::platform::os;

namespace {

constexpr std::uint32_t deviceIndexEnd = 32;
constexpr std::size_t linkTextMaxBytes = 4096;

} // namespace

struct BoardAccess::D {
    ~D()
    {
        if (handle != nullptr) {
            os::freeModule(handle);
        }
    }
    template <typename Function>
    void bind(Function*& slot, const char* name)
    {
        slot = reinterpret_cast<Function*>(os::moduleSymbol(handle, name));
        if (slot == nullptr) {
            throw Failure(ExitCode::Missing, fmt::format("{}: no operation '{}'", path, name));
        }
    }
    std::string infoText(std::uint64_t device, const char* key) const
    {
        const char* text = getBoardInfoString(device, key);
        return text != nullptr ? text : "";
    }
    BoardInfo info(std::uint64_t device) const
    {
        BoardInfo info;
        info.name = infoText(device, "board/name");
        info.serial = getBoardInfoInt(device, "board/serial");
        info.type = getBoardInfoInt(device, "board/type");
        info.firmware = fmt::format("{}.{}", getBoardInfoInt(device, "firmware/major"),
                                    getBoardInfoInt(device, "firmware/minor"));
        info.ports = getBoardInfoInt(device, "ports/gige");
        return info;
    }

    std::string path;
    os::ModuleHandle handle = nullptr;
    std::uint32_t (*getDeviceCount)() = nullptr;
    std::uint64_t (*getDevice)(std::uint32_t) = nullptr;
    std::int32_t (*putDevice)(std::uint64_t) = nullptr;
    std::int32_t (*getBoardInfoInt)(std::uint64_t, const char*) = nullptr;
    const char* (*getBoardInfoString)(std::uint64_t, const char*) = nullptr;
    const KivoBoardControl* control = nullptr;
};

BoardAccess::BoardAccess(const std::string& binFolder)
    : d(std::make_unique<D>())
{
    d->path = fmt::format("{}{}kivo_hal{}", binFolder, os::pathSeparator, os::librarySuffix);
    const os::ModuleLoad load = os::loadModule(d->path.c_str());
    if (load.handle == nullptr) {
        throw Failure(ExitCode::Missing, fmt::format("board library not loaded: {}", load.errorText));
    }
    d->handle = load.handle;
    d->bind(d->getDeviceCount, "KHalGetDeviceCount");
    d->bind(d->getDevice, "KHalGetDevice");
    d->bind(d->putDevice, "KHalPutDevice");
    d->bind(d->getBoardInfoInt, "KHalGetBoardInfoInt");
    d->bind(d->getBoardInfoString, "KHalGetBoardInfoString");
    if (void* table = os::moduleSymbol(d->handle, "KivoBoardControlTable"); table != nullptr) {
        d->control = reinterpret_cast<KivoBoardControlFunction>(table)(KIVO_BOARD_CONTROL_VERSION);
    }
}

BoardAccess::~BoardAccess() = default;

std::vector<BoardInfo> BoardAccess::boards() const
{
    std::vector<BoardInfo> found;
    const std::uint32_t count = d->getDeviceCount();
    for (std::uint32_t index = 0; index < deviceIndexEnd && found.size() < count; ++index) {
        const std::uint64_t device = d->getDevice(index);
        if (device != 0) {
            found.push_back(d->info(device));
            found.back().board = static_cast<int>(found.size()) - 1;
            d->putDevice(device);
        }
    }
    return found;
}

void BoardAccess::requirePort(int board, int port) const
{
    const std::vector<BoardInfo> all = boards();
    if (all.empty()) {
        throw Failure(ExitCode::Missing, fmt::format("board {} not found, no board is present", board));
    }
    const auto found =
        std::find_if(all.begin(), all.end(), [board](const auto& each) { return each.board == board; });
    if (found == all.end()) {
        std::vector<int> present;
        std::transform(all.begin(), all.end(), std::back_inserter(present),
                       [](const auto& each) { return each.board; });
        throw Failure(ExitCode::Missing,
                      fmt::format("board {} not found, boards present: {} (see 'mesk-phy boards')", board,
                                  fmt::join(present, ", ")));
    }
    if (port >= found->ports) {
        throw Failure(ExitCode::Missing,
                      fmt::format("port {} not found, board {} has {} GigE ports, counted from 0 "
                                  "(see 'mesk-phy boards')",
                                  port, board, found->ports));
    }
}

const KivoBoardControl* BoardAccess::control() const
{
    return d->control;
}

std::string BoardAccess::link(int board, int port) const
{
    if (d->control == nullptr) {
        return "";
    }
    std::array<char, linkTextMaxBytes> text{};
    d->control->link(static_cast<std::uint32_t>(board), static_cast<std::uint32_t>(port), text.data(),
                     text.size());
    return text.data();
}

void BoardAccess::plug(int board, int port, const std::string& link) const
{
    if (d->control == nullptr) {
        throw Failure(ExitCode::Missing, "this board has no control interface that could plug its ports");
    }
    std::array<char, linkTextMaxBytes> error{};
    if (d->control->plug(static_cast<std::uint32_t>(board), static_cast<std::uint32_t>(port), link.c_str(),
                         error.data(), error.size()) < 0) {
        throw Failure(ExitCode::Usage, fmt::format("link '{}': {}", link, error.data()));
    }
}

void BoardAccess::unplug(int board, int port) const noexcept
{
    if (d->control != nullptr) {
        std::array<char, linkTextMaxBytes> error{};
        d->control->plug(static_cast<std::uint32_t>(board), static_cast<std::uint32_t>(port), "none",
                         error.data(), error.size());
    }
}

} // namespace mesk::host
