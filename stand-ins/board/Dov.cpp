#include "stand-ins/board/Operations.h"

// The face of the firmware design runtime.

using namespace emulated_board;

#define KIVO_API extern "C" EMULATED_BOARD_EXPORT

KIVO_API std::uint64_t DovFirmwareTrampoline(std::uint8_t major, std::uint8_t minor)
{
    return operations::firmwareTrampoline(major, minor);
}

KIVO_API std::uint32_t DovGetRegisterByName(std::uint64_t design, const char* name)
{
    return operations::getRegisterByName(design, name);
}

KIVO_API std::int32_t DovUnloadDovFile(std::uint64_t design)
{
    return operations::unloadDovFile(design);
}

KIVO_API std::uint64_t DovLoadDovFileWithType(const char* path, std::uint32_t type)
{
    return operations::loadDovFileWithType(path, type);
}
