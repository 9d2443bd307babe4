#pragma once

#include <cstdint>

/// What the benchmarks' board library exports beside the board operations.
extern "C" {
/// Sets the size in bytes of the frame that every transmission of the receive queue brings.
using BenchSetFrameSize = void (*)(std::uint32_t bytes);
/// The words of the transmission, for the yardstick: the same memory is copied.
using BenchTransmission = const std::uint32_t* (*)();
/// Puts one report into the action-timeout queue.
using BenchAddReport = void (*)();
/// Reads of the action-timeout queue so far.
using BenchReportReads = std::uint32_t (*)();
}
