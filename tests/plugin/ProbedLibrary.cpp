// Both closed libraries in one: the answer of every operation tells which one was reached, and with what
// in which place.

#include <cstdint>

namespace {

// Of a wide value the upper half counts too, so that a cut one is seen.
std::uint64_t digitOf(std::uint64_t value)
{
    return (value & 0xFFFFFFFF) + (value >> 32U);
}
std::uint64_t digitOf(const char* text)
{
    return static_cast<std::uint64_t>(text[0] - '0');
}

/// The number of the operation and five digits, the first argument's last.
template <typename... Arguments>
std::uint64_t answer(std::uint64_t operation, Arguments... arguments)
{
    std::uint64_t sum = operation * 100000;
    std::uint64_t weight = 1;
    ((sum += weight * digitOf(arguments), weight *= 10), ...);
    return sum;
}
template <typename... Arguments>
std::int32_t status(std::uint64_t operation, Arguments... arguments)
{
    return static_cast<std::int32_t>(answer(operation, arguments...));
}
constexpr std::uint64_t wide = 1000000000000;

} // namespace

#define EXPORTED __attribute__((visibility("default")))
extern "C" {
EXPORTED std::uint64_t KHalInitDevice(std::uint32_t board)
{
    return wide + answer(1, board);
}
EXPORTED std::int32_t KHalFreeDevice(std::uint64_t device)
{
    return status(2, device);
}
EXPORTED std::uint32_t KHalGetDeviceCount()
{
    return 300000;
}
EXPORTED std::uint64_t KHalGetDevice(std::uint32_t index)
{
    return wide + answer(4, index);
}
EXPORTED std::int32_t KHalPutDevice(std::uint64_t device)
{
    return status(5, device);
}
EXPORTED std::int32_t KHalGetBoardInfoInt(std::uint64_t device, const char* key)
{
    return status(6, device, key);
}
EXPORTED const char* KHalGetBoardInfoString(std::uint64_t device, const char* key)
{
    return device >> 32U != 0 ? key : "cut";
}
EXPORTED std::int32_t KHalConfigureFpga(std::uint64_t device, std::uint64_t design)
{
    return status(8, device, design);
}
EXPORTED std::int32_t KHalRegisterWrite(std::uint64_t device, std::uint32_t id, std::uint64_t value)
{
    return status(9, device, id, value);
}
EXPORTED std::int32_t KHalRegisterRead(std::uint64_t device, std::uint32_t id, std::uint64_t* value)
{
    return status(10, device, id, *value);
}
EXPORTED std::int32_t KHalDataQueueClear(std::uint64_t device, std::uint32_t queue)
{
    return status(11, device, queue);
}
EXPORTED std::int32_t KHalDataQueueReadBufferLong(std::uint64_t device, std::uint32_t queue, void* buffer,
                                                  std::uint32_t sizeBytes, std::uint32_t timeoutMs)
{
    return status(12, device, queue, *static_cast<std::uint64_t*>(buffer), sizeBytes, timeoutMs);
}
EXPORTED std::int32_t KHalDataQueueGetNrOfLostWords(std::uint64_t device, std::uint32_t queue)
{
    return status(13, device, queue);
}
EXPORTED std::uint64_t DovFirmwareTrampoline(std::uint8_t major, std::uint8_t minor)
{
    return wide + answer(14, major, minor);
}
EXPORTED std::uint32_t DovGetRegisterByName(std::uint64_t design, const char* name)
{
    return static_cast<std::uint32_t>(answer(15, design, name));
}
EXPORTED std::int32_t DovUnloadDovFile(std::uint64_t design)
{
    return status(16, design);
}
EXPORTED std::int32_t DovLoadDovFileWithType()
{
    return 0;
}
}
