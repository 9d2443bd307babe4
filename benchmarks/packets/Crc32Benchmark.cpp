#include "packets/Crc32.h"
#include "packets/EthernetFrame.h"

#include <benchmark/benchmark.h>

#include <array>

namespace mesk::benchmarks {

namespace {

std::array<std::uint32_t, 256> makeTable()
{
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        std::uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1) != 0 ? 0xEDB88320U ^ (value >> 1) : value >> 1;
        }
        table[i] = value;
    }
    return table;
}

void crc32ByTable(benchmark::State& state)
{
    const auto table = makeTable();
    const QByteArray bytes(static_cast<int>(state.range(0)), '\x5a');
    while (state.KeepRunning()) {
        std::uint32_t crc = 0xFFFFFFFFU;
        for (const char byte : bytes) {
            crc = table[(crc ^ static_cast<unsigned char>(byte)) & 0xFFU] ^ (crc >> 8);
        }
        benchmark::DoNotOptimize(~crc);
    }
}

void crc32(benchmark::State& state)
{
    const QByteArray bytes(static_cast<int>(state.range(0)), '\x5a');
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(ethernetCrc32(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    }
}

BENCHMARK(crc32ByTable)->Arg(1514);
BENCHMARK(crc32)->Arg(1514);

} // namespace

} // namespace mesk::benchmarks
