#pragma once

#include "stand-ins/board/FirmwareDesign.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace emulated_board {

constexpr std::uint32_t boardsMax = 32;
constexpr const char* defaultLink = "camera";

/// How one board is fitted. The defaults are those of the set-up file.
struct BoardSetup {
    std::uint32_t device = 0; ///< where it stands in the list of devices, 0 to 31
    std::map<std::string, std::int32_t> infoInts;
    std::map<std::string, std::string> infoTexts;
    std::uint32_t ports = 4;
    FirmwareVersion firmware{2, 0};
    std::uint32_t receiveCapacityWords = 65536;
    std::uint32_t actionCapacityWords = 256;
    bool lineSpeed = false;
    bool announceOdd = false;
    bool readPartialWords = false; ///< a read of two and a half words brings three
    std::uint32_t pauseMs = 500;   ///< 0: no flow control
    std::uint32_t phyResetReads = 0;
    std::map<std::uint32_t, std::uint32_t> actionTimeoutsPerSecond; ///< by port; the others have none
    std::map<std::uint32_t, std::string> links;                     ///< by port; the others have defaultLink
};

struct Setup {
    std::vector<BoardSetup> boards;
    DesignCatalogue designs = builtInDesigns();
};

/// Board 0 with four ports and all of the firmware, board 1 with two ports and no action commands.
Setup defaultSetup();

/// Reads an INI file. Throws std::runtime_error, whose text says what is wrong where.
Setup readSetup(const std::string& path);

} // namespace emulated_board
