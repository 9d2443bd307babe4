#pragma once

#include "stand-ins/board/links/Link.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace emulated_board {

struct PortNumber {
    std::uint32_t board;
    std::uint32_t port;

    bool operator==(const PortNumber& other) const { return board == other.board && port == other.port; }
};

/// A link made for one port, not started yet. `link` is null for a port that is plugged to nothing.
struct Plugged {
    PortNumber port;
    std::string text; ///< as it is told to users, and understood by makeLinks
    std::unique_ptr<Link> link;
};

/// Gives the line end of a port, null if there is no such port.
using FindLineEnd = std::function<LineEnd*(PortNumber)>;

/// Makes what a text such as "pair:0.1" says, for every port that it involves.
/// Throws std::runtime_error, whose text is for the user.
std::vector<Plugged> makeLinks(PortNumber port, const std::string& text, const FindLineEnd& find);

/// Parses "BOARD.PORT". Throws std::runtime_error.
PortNumber parsePortNumber(const std::string& text);

} // namespace emulated_board
