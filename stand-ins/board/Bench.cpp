#include "stand-ins/board/Bench.h"

#include <cstdlib>
#include <fmt/core.h>
#include <stdexcept>

namespace emulated_board {

Bench& Bench::instance()
{
    static Bench bench;
    return bench;
}

Bench::Bench()
{
    const char* const path = std::getenv("KIVO_BOARD_SETUP");
    try {
        powerCycle(path != nullptr && *path != '\0' ? std::optional<std::string>(path) : std::nullopt);
    } catch (const std::exception& error) {
        // No board rather than another one than was asked for.
        fmt::print(stderr, "emulated board: KIVO_BOARD_SETUP {}: {}\n", path != nullptr ? path : "",
                   error.what());
    }
}

Bench::~Bench()
{
    const std::lock_guard<std::mutex> lock(m_changing);
    apply({});
}

void Bench::powerCycle(const std::optional<std::string>& setupPath)
{
    const Setup setup = setupPath ? readSetup(*setupPath) : defaultSetup();
    const std::lock_guard<std::mutex> lock(m_changing);
    for (std::size_t n = 0; n < setup.boards.size(); ++n) {
        if (!m_boards[n])
            m_boards[n] = std::make_unique<Board>();
    }
    // All links are made before anything is switched off, so that one that can't be had changes nothing.
    const FindLineEnd find = [&](PortNumber at) -> LineEnd* {
        if (at.board >= setup.boards.size() || at.port >= setup.boards[at.board].ports)
            return nullptr;
        return m_boards[at.board]->possiblePort(at.port);
    };
    std::vector<std::vector<Plugged>> links;
    const auto make = [&](PortNumber at, const std::string& text) {
        try {
            links.push_back(makeLinks(at, text, find));
        } catch (const std::exception& error) {
            throw std::runtime_error(fmt::format("[Board{}] link{}: {}", at.board, at.port, error.what()));
        }
    };
    // The defaults first: a pair that is asked for takes its other end from them.
    for (std::uint32_t n = 0; n < setup.boards.size(); ++n) {
        for (std::uint32_t port = 0; port < setup.boards[n].ports; ++port) {
            if (setup.boards[n].links.count(port) == 0)
                make({n, port}, defaultLink);
        }
    }
    for (std::uint32_t n = 0; n < setup.boards.size(); ++n) {
        for (const auto& [port, text] : setup.boards[n].links)
            make({n, port}, text);
    }
    apply(setup);
    for (auto& each : links)
        install(std::move(each));
}

void Bench::apply(const Setup& setup)
{
    const std::uint32_t before = boardCount();
    for (std::uint32_t n = 0; n < before; ++n) {
        m_boards[n]->stopActionTimeouts();
        for (std::uint32_t port = 0; port < m_boards[n]->portCount(); ++port)
            unplug({n, port});
    }
    m_boardCount.store(0, std::memory_order_release);
    m_handles.clear();
    for (std::uint32_t n = 0; n < before; ++n)
        m_boards[n]->wakeReaders();
    m_scripts.clear();
    m_journal.clear();
    {
        const std::lock_guard<std::mutex> lock(m_designsMutex);
        m_designs = setup.designs;
    }
    // A board comes up with the design of its firmware; without one it has no registers.
    for (std::size_t n = 0; n < setup.boards.size(); ++n) {
        const BoardSetup& board = setup.boards[n];
        m_boards[n]->powerOn(board, design(board.firmware).value_or(FirmwareDesign(0)));
    }
    m_boardCount.store(std::uint32_t(setup.boards.size()), std::memory_order_release);
}

void Bench::plug(PortNumber port, const std::string& text)
{
    const std::lock_guard<std::mutex> lock(m_changing);
    const FindLineEnd find = [this](PortNumber at) -> LineEnd* {
        Board* const found = board(at.board);
        return found != nullptr ? found->port(at.port) : nullptr;
    };
    install(makeLinks(port, text, find));
}

/// Pulls the plug of a port and, if it was paired, the other end of its cable.
void Bench::unplug(PortNumber at)
{
    Port& port = *m_boards[at.board]->port(at.port);
    const std::string text = port.linkText();
    port.plug("none", nullptr);
    const std::string pair = "pair:";
    if (text.compare(0, pair.size(), pair) == 0) {
        const PortNumber other = parsePortNumber(text.substr(pair.size()));
        m_boards[other.board]->port(other.port)->plug("none", nullptr);
    }
}

void Bench::install(std::vector<Plugged> links)
{
    for (const Plugged& each : links)
        unplug(each.port);
    for (Plugged& each : links) {
        const std::shared_ptr<Link> link = std::move(each.link);
        if (link)
            link->start();
        m_boards[each.port.board]->port(each.port.port)->plug(each.text, link);
    }
}

std::optional<FirmwareDesign> Bench::design(FirmwareVersion version) const
{
    const std::lock_guard<std::mutex> lock(m_designsMutex);
    const auto found = m_designs.find(version);
    return found != m_designs.end() ? std::optional<FirmwareDesign>(found->second) : std::nullopt;
}

} // namespace emulated_board
