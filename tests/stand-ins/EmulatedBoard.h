#pragma once

#include "stand-ins/board/BoardControl.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mesk::tests {

/// The emulated board as a test sees it. Constructing it loads `kivo_hal` from the unit tests' root,
/// takes the built-in set-up (or the one whose INI text is given), switches off and on, pulls the plugs of
/// the cameras that stand at all other ports, and starts an empty journal.
class EmulatedBoard {
public:
    explicit EmulatedBoard(const std::string& setupIniText = {});

    const KivoBoardControl& control() const { return *m_control; }

    /// Lets the n-th board call from now (1 is the next) fail in its own way.
    void failCall(std::uint64_t n);
    /// Whether a script has answered a call.
    bool scriptFired() const;
    /// Handles and designs held of the board.
    std::uint32_t openHandles() const { return held().devices; }
    std::uint32_t openDesigns() const { return held().designs; }

    /// Throws if the journal hasn't held them all.
    std::vector<KivoBoardCall> calls() const;
    /// The journal as one line a call: "KHalInitDevice(0)", "KHalRegisterWrite(GigE_Reset, 15)",
    /// "KHalRegisterRead(MdioReadReg)", "DovGetRegisterByName(GigE_Mdio)",
    /// "KHalDataQueueReadBufferLong(0, 4, 100)" (queue, size, time-out), "KHalDataQueueClear(8)",
    /// "KHalGetBoardInfoInt(ports/gige)", "DovFirmwareTrampoline(2, 0)"; handles are left out; a write
    /// to register id 0 is "KHalRegisterWrite(0, 15)"; a note is its bare text.
    std::vector<std::string> journal() const;
    void clearJournal();

    void inject(std::uint32_t queue, const std::vector<std::uint32_t>& words, std::uint32_t board = 0);

private:
    KivoBoardHeld held() const;
    void unplugCameras() const;

    const KivoBoardControl* m_control;
};

} // namespace mesk::tests
