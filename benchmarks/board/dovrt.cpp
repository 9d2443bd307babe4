#include <cstdint>

/// A design runtime whose one design has every register.
#define BENCH_EXPORT extern "C" __attribute__((visibility("default")))

BENCH_EXPORT std::uint64_t DovLoadDovFileWithType(const char*, std::uint32_t)
{
    return 0;
}

BENCH_EXPORT std::uint64_t DovFirmwareTrampoline(std::uint8_t, std::uint8_t)
{
    return 1;
}

BENCH_EXPORT std::uint32_t DovGetRegisterByName(std::uint64_t, const char*)
{
    return 7;
}

BENCH_EXPORT std::int32_t DovUnloadDovFile(std::uint64_t)
{
    return 0;
}
