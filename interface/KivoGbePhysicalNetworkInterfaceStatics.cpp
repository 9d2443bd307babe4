#include "interface/KivoGbePhysicalNetworkInterfaceStatics.h"

namespace kivo::core::mesk {

using templates::platform::RecursiveMutex;
using templates::platform::RecursiveMutexGuard;

RecursiveMutex& KivoGbePhysicalNetworkInterfaceStatics::mdioLock(std::uint32_t boardId)
{
    const RecursiveMutexGuard guard(&m_fieldsLock);
    return m_mdioLocks[boardId];
}

bool KivoGbePhysicalNetworkInterfaceStatics::isBoardReset(std::uint32_t boardId)
{
    const RecursiveMutexGuard guard(&m_fieldsLock);
    return m_resetBoards.count(boardId) != 0;
}

void KivoGbePhysicalNetworkInterfaceStatics::addResetBoard(std::uint32_t boardId)
{
    const RecursiveMutexGuard guard(&m_fieldsLock);
    m_resetBoards.insert(boardId);
}

void KivoGbePhysicalNetworkInterfaceStatics::clearResetBoards()
{
    const RecursiveMutexGuard guard(&m_fieldsLock);
    m_resetBoards.clear();
}

} // namespace kivo::core::mesk
