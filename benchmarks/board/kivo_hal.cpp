#include "benchmarks/board/BenchBoard.h"

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>

/// A board library whose read of the receive queue is one memcpy and whose register write returns at
/// once. A read of the action-timeout queue waits, as it does on a board.
#define BENCH_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

constexpr std::uint32_t endOfTransmission = 0x10000;
std::array<std::uint32_t, 65536> transmission{};
std::uint32_t frameSize = 64;
bool sizeWordIsNext = true;

constexpr std::uint32_t firstReportQueue = 8;
constexpr std::uint32_t report = endOfTransmission | 1;
std::mutex reportsMutex; // guards what follows
std::condition_variable reportCame;
std::uint32_t reports = 0;
std::uint32_t reportReads = 0;

std::int32_t readReport(void* buffer, std::uint32_t timeoutMs)
{
    constexpr std::int32_t queueTimeout = -2120;
    std::unique_lock<std::mutex> lock(reportsMutex);
    ++reportReads;
    if (!reportCame.wait_for(lock, std::chrono::milliseconds(timeoutMs), [] { return reports != 0; })) {
        return queueTimeout;
    }
    --reports;
    std::memcpy(buffer, &report, sizeof report);
    return sizeof report;
}

} // namespace

BENCH_EXPORT void benchSetFrameSize(std::uint32_t bytes)
{
    frameSize = bytes;
    sizeWordIsNext = true;
    for (std::size_t i = 0; i < transmission.size(); ++i) {
        transmission[i] = static_cast<std::uint32_t>(i * 2654435761U) & 0xFFFFU;
    }
    transmission[bytes / 2 - 1] |= endOfTransmission;
}

BENCH_EXPORT const std::uint32_t* benchTransmission()
{
    return transmission.data();
}

BENCH_EXPORT void benchAddReport()
{
    const std::lock_guard<std::mutex> lock(reportsMutex);
    ++reports;
    reportCame.notify_one();
}

BENCH_EXPORT std::uint32_t benchReportReads()
{
    const std::lock_guard<std::mutex> lock(reportsMutex);
    return reportReads;
}

BENCH_EXPORT std::uint64_t KHalInitDevice(std::uint32_t)
{
    return 1;
}

BENCH_EXPORT std::int32_t KHalFreeDevice(std::uint64_t)
{
    return 0;
}

BENCH_EXPORT std::uint32_t KHalGetDeviceCount()
{
    return 1;
}

BENCH_EXPORT std::uint64_t KHalGetDevice(std::uint32_t)
{
    return 1;
}

BENCH_EXPORT std::int32_t KHalPutDevice(std::uint64_t)
{
    return 0;
}

BENCH_EXPORT std::int32_t KHalGetBoardInfoInt(std::uint64_t, const char* key)
{
    return std::strcmp(key, "ports/gige") == 0 ? 4 : 2;
}

BENCH_EXPORT const char* KHalGetBoardInfoString(std::uint64_t, const char*)
{
    return "GigE";
}

BENCH_EXPORT std::int32_t KHalConfigureFpga(std::uint64_t, std::uint64_t)
{
    return 0;
}

BENCH_EXPORT std::int32_t KHalRegisterWrite(std::uint64_t, std::uint32_t, std::uint64_t)
{
    return 0;
}

BENCH_EXPORT std::int32_t KHalRegisterRead(std::uint64_t, std::uint32_t, std::uint64_t* value)
{
    *value = 0;
    return 0;
}

BENCH_EXPORT std::int32_t KHalDataQueueClear(std::uint64_t, std::uint32_t)
{
    return 0;
}

BENCH_EXPORT std::int32_t KHalDataQueueReadBufferLong(std::uint64_t, std::uint32_t queue, void* buffer,
                                                      std::uint32_t size, std::uint32_t timeoutMs)
{
    if (queue >= firstReportQueue) {
        return readReport(buffer, timeoutMs);
    }
    if (sizeWordIsNext) {
        std::memcpy(buffer, &frameSize, sizeof frameSize);
    } else {
        std::memcpy(buffer, transmission.data(), size);
    }
    sizeWordIsNext = !sizeWordIsNext;
    return static_cast<std::int32_t>(size);
}

BENCH_EXPORT std::int32_t KHalDataQueueGetNrOfLostWords(std::uint64_t, std::uint32_t)
{
    return 0;
}
