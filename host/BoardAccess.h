#pragma once

#include "stand-ins/board/BoardControl.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace mesk::host {

/// What the board library tells about a board.
struct BoardInfo {
    int board = 0;
    std::string name;
    std::int32_t serial = 0;
    std::int32_t type = 0;
    std::string firmware; ///< "MAJOR.MINOR"
    int ports = 0;
};

/// The board library, asked beside the plugin: which boards there are, and, where the board is the
/// emulated one, its control interface.
class BoardAccess {
public:
    /// @throws Failure if the library is missing, or one of the operations that this program uses.
    explicit BoardAccess(const std::string& binFolder);
    ~BoardAccess();
    BoardAccess(const BoardAccess&) = delete;
    BoardAccess& operator=(const BoardAccess&) = delete;

    /// A board's number, as `KHalInitDevice` takes it, is its place among the devices that are there.
    std::vector<BoardInfo> boards() const;
    /// @throws Failure that names what is there.
    void requirePort(int board, int port) const;

    /// Null for a board that has none.
    const KivoBoardControl* control() const;
    /// The link of a port; empty without a control interface.
    std::string link(int board, int port) const;
    /// @throws Failure if the port can't be plugged so.
    void plug(int board, int port, const std::string& link) const;
    /// Ends what a port is plugged to, where that can be done: what is in flight gets there first.
    void unplug(int board, int port) const noexcept;

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::host
