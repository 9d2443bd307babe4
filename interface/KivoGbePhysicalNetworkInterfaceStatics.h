#pragma once

#include "support/platform/GuardedSingleton.h"
#include "support/platform/RecursiveMutexGuard.h"

#include <cstdint>
#include <map>
#include <set>

namespace kivo::core::mesk {

/// What all interface objects of the process share: which boards have had their hardware reset, and
/// the lock on each board's MDIO engine. Ends at the last deinit of the library. [any thread]
class KivoGbePhysicalNetworkInterfaceStatics
    : public GuardedSingleton<KivoGbePhysicalNetworkInterfaceStatics> {
public:
    /// Held over a whole reset or dump: a board has one MDIO engine for all its ports. Also what makes
    /// two ports that open at the same time reset their board once. Valid as long as this object.
    templates::platform::RecursiveMutex& mdioLock(std::uint32_t boardId);

    bool isBoardReset(std::uint32_t boardId);
    void addResetBoard(std::uint32_t boardId);
    /// Never waits for a reset that runs.
    void clearResetBoards();

private:
    std::set<std::uint32_t> m_resetBoards;
    // Taken for one look-up or change only, so that nobody waits here for a reset.
    templates::platform::RecursiveMutex m_fieldsLock;
    std::map<std::uint32_t, templates::platform::RecursiveMutex> m_mdioLocks;
};

} // namespace kivo::core::mesk
