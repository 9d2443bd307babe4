#pragma once

#include "stand-ins/board/Board.h"
#include "stand-ins/board/HandleTable.h"
#include "stand-ins/board/Journal.h"
#include "stand-ins/board/Scripts.h"
#include "stand-ins/board/links/LinkFactory.h"

#include <array>
#include <optional>
#include <string>

namespace emulated_board {

/// All there is: the boards, the handles held of them, the designs, scripts and journal. The one object
/// behind both libraries; made by the first call, with the set-up that KIVO_BOARD_SETUP names.
/// [any thread]
class Bench {
public:
    static Bench& instance();
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;
    ~Bench();

    /// Switches off and on with the set-up of a file, or the built-in one without a path. Throws
    /// std::runtime_error and leaves all as it is if the set-up can't be had.
    void powerCycle(const std::optional<std::string>& setupPath);
    /// Throws std::runtime_error and leaves all as it is if the link can't be had.
    void plug(PortNumber port, const std::string& text);

    std::uint32_t boardCount() const { return m_boardCount.load(std::memory_order_acquire); }
    /// Null for no such board.
    Board* board(std::uint32_t number) { return number < boardCount() ? m_boards[number].get() : nullptr; }
    /// The board behind a device handle, null for a bad handle.
    Board* boardOf(std::uint64_t handle)
    {
        const auto number = m_handles.device(handle);
        return number ? m_boards[std::size_t(*number)].get() : nullptr;
    }
    std::optional<FirmwareDesign> design(FirmwareVersion version) const;

    HandleTable& handles() { return m_handles; }
    Scripts& scripts() { return m_scripts; }
    Journal& journal() { return m_journal; }
    /// Whether calls have to be looked at; otherwise nothing is spent on it.
    bool isWatched() const { return m_journal.isOn() || m_scripts.areThere(); }

private:
    Bench();
    void apply(const Setup& setup);
    void unplug(PortNumber port);
    void install(std::vector<Plugged> links);

    HandleTable m_handles;
    Scripts m_scripts;
    Journal m_journal;
    std::array<std::unique_ptr<Board>, boardsMax> m_boards; // each made when first needed, then kept
    std::atomic<std::uint32_t> m_boardCount{0};
    mutable std::mutex m_designsMutex;
    DesignCatalogue m_designs;
    std::mutex m_changing; // of those who plug and switch
};

} // namespace emulated_board
