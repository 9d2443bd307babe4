#include "stand-ins/board/Operations.h"

// The face of the board library: the operations under their names, and the control interface beside.

using namespace emulated_board;

#define KIVO_API extern "C" EMULATED_BOARD_EXPORT

KIVO_API std::uint64_t KHalInitDevice(std::uint32_t board)
{
    return operations::initDevice(board);
}

KIVO_API std::int32_t KHalFreeDevice(std::uint64_t handle)
{
    return operations::freeDevice(handle);
}

KIVO_API std::uint32_t KHalGetDeviceCount(void)
{
    return operations::getDeviceCount();
}

KIVO_API std::uint64_t KHalGetDevice(std::uint32_t index)
{
    return operations::getDevice(index);
}

KIVO_API std::int32_t KHalPutDevice(std::uint64_t handle)
{
    return operations::putDevice(handle);
}

KIVO_API std::int32_t KHalGetBoardInfoInt(std::uint64_t handle, const char* key)
{
    return operations::getBoardInfoInt(handle, key);
}

KIVO_API const char* KHalGetBoardInfoString(std::uint64_t handle, const char* key)
{
    return operations::getBoardInfoString(handle, key);
}

KIVO_API std::int32_t KHalConfigureFpga(std::uint64_t handle, std::uint64_t design)
{
    return operations::configureFpga(handle, design);
}

KIVO_API std::int32_t KHalRegisterWrite(std::uint64_t handle, std::uint32_t id, std::uint64_t value)
{
    return operations::registerWrite(handle, id, value);
}

KIVO_API std::int32_t KHalRegisterRead(std::uint64_t handle, std::uint32_t id, std::uint64_t* value)
{
    return operations::registerRead(handle, id, value);
}

KIVO_API std::int32_t KHalDataQueueClear(std::uint64_t handle, std::uint32_t queue)
{
    return operations::dataQueueClear(handle, queue);
}

KIVO_API std::int32_t KHalDataQueueReadBufferLong(std::uint64_t handle, std::uint32_t queue, void* buffer,
                                                  std::uint32_t sizeBytes, std::uint32_t timeoutMs)
{
    return operations::dataQueueReadBufferLong(handle, queue, buffer, sizeBytes, timeoutMs);
}

KIVO_API std::int32_t KHalDataQueueGetNrOfLostWords(std::uint64_t handle, std::uint32_t queue)
{
    return operations::dataQueueGetNrOfLostWords(handle, queue);
}

KIVO_API const KivoBoardControl* KivoBoardControlTable(std::uint32_t version)
{
    return operations::controlTable(version);
}
