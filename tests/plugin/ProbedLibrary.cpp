// Both closed libraries in one: every operation answers a number of its own plus its arguments, so that
// a caller sees which one it reached and with what.

#include <cstdint>

#define EXPORTED __attribute__((visibility("default")))

extern "C" {
EXPORTED std::uint64_t KHalInitDevice(std::uint32_t board)
{
    return 100000000000 + board;
}
EXPORTED std::int32_t KHalFreeDevice(std::uint64_t device)
{
    return static_cast<std::int32_t>(200 + device);
}
EXPORTED std::uint32_t KHalGetDeviceCount()
{
    return 300;
}
EXPORTED std::uint64_t KHalGetDevice(std::uint32_t index)
{
    return 100000000400 + index;
}
EXPORTED std::int32_t KHalPutDevice(std::uint64_t device)
{
    return static_cast<std::int32_t>(500 + device);
}
EXPORTED std::int32_t KHalGetBoardInfoInt(std::uint64_t device, const char* key)
{
    return static_cast<std::int32_t>(600 + device) + key[0];
}
EXPORTED const char* KHalGetBoardInfoString(std::uint64_t /*device*/, const char* key)
{
    return key;
}
EXPORTED std::int32_t KHalConfigureFpga(std::uint64_t device, std::uint64_t design)
{
    return static_cast<std::int32_t>(800 + device + design);
}
EXPORTED std::int32_t KHalRegisterWrite(std::uint64_t device, std::uint32_t id, std::uint64_t value)
{
    return static_cast<std::int32_t>(900 + device + id + value);
}
EXPORTED std::int32_t KHalRegisterRead(std::uint64_t device, std::uint32_t id, std::uint64_t* value)
{
    return static_cast<std::int32_t>(1000 + device + id + *value);
}
EXPORTED std::int32_t KHalDataQueueClear(std::uint64_t device, std::uint32_t queue)
{
    return static_cast<std::int32_t>(1100 + device + queue);
}
EXPORTED std::int32_t KHalDataQueueReadBufferLong(std::uint64_t device, std::uint32_t queue, void* buffer,
                                                  std::uint32_t sizeBytes, std::uint32_t timeoutMs)
{
    const auto* value = static_cast<const std::uint64_t*>(buffer);
    return static_cast<std::int32_t>(1200 + device + queue + *value + sizeBytes + timeoutMs);
}
EXPORTED std::int32_t KHalDataQueueGetNrOfLostWords(std::uint64_t device, std::uint32_t queue)
{
    return static_cast<std::int32_t>(1300 + device + queue);
}
EXPORTED std::uint64_t DovFirmwareTrampoline(std::uint8_t major, std::uint8_t minor)
{
    return 100000001400 + major + minor;
}
EXPORTED std::uint32_t DovGetRegisterByName(std::uint64_t design, const char* name)
{
    return static_cast<std::uint32_t>(1500 + design) + static_cast<std::uint32_t>(name[0]);
}
EXPORTED std::int32_t DovUnloadDovFile(std::uint64_t design)
{
    return static_cast<std::int32_t>(1600 + design);
}
EXPORTED std::int32_t DovLoadDovFileWithType()
{
    return 0;
}
}
