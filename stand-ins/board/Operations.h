#pragma once

#include "stand-ins/board/BoardControl.h"

#include <cstdint>

#define EMULATED_BOARD_EXPORT __attribute__((visibility("default")))

/// The operations of both closed libraries, which forward to these. [any thread] A bad handle is
/// answered at once, as is everything else but a queue read.
namespace emulated_board::operations {

EMULATED_BOARD_EXPORT std::uint64_t initDevice(std::uint32_t board);
EMULATED_BOARD_EXPORT std::int32_t freeDevice(std::uint64_t handle);
EMULATED_BOARD_EXPORT std::uint32_t getDeviceCount();
EMULATED_BOARD_EXPORT std::uint64_t getDevice(std::uint32_t index);
EMULATED_BOARD_EXPORT std::int32_t putDevice(std::uint64_t handle);
EMULATED_BOARD_EXPORT std::int32_t getBoardInfoInt(std::uint64_t handle, const char* key);
EMULATED_BOARD_EXPORT const char* getBoardInfoString(std::uint64_t handle, const char* key);
EMULATED_BOARD_EXPORT std::int32_t configureFpga(std::uint64_t handle, std::uint64_t design);
EMULATED_BOARD_EXPORT std::int32_t registerWrite(std::uint64_t handle, std::uint32_t id, std::uint64_t value);
EMULATED_BOARD_EXPORT std::int32_t registerRead(std::uint64_t handle, std::uint32_t id, std::uint64_t* value);
EMULATED_BOARD_EXPORT std::int32_t dataQueueClear(std::uint64_t handle, std::uint32_t queue);
EMULATED_BOARD_EXPORT std::int32_t dataQueueReadBufferLong(std::uint64_t handle, std::uint32_t queue,
                                                           void* buffer, std::uint32_t sizeBytes,
                                                           std::uint32_t timeoutMs);
EMULATED_BOARD_EXPORT std::int32_t dataQueueGetNrOfLostWords(std::uint64_t handle, std::uint32_t queue);

EMULATED_BOARD_EXPORT std::uint64_t firmwareTrampoline(std::uint8_t major, std::uint8_t minor);
EMULATED_BOARD_EXPORT std::uint32_t getRegisterByName(std::uint64_t design, const char* name);
EMULATED_BOARD_EXPORT std::int32_t unloadDovFile(std::uint64_t design);
EMULATED_BOARD_EXPORT std::uint64_t loadDovFileWithType(const char* path, std::uint32_t type);

EMULATED_BOARD_EXPORT const KivoBoardControl* controlTable(std::uint32_t version);

} // namespace emulated_board::operations
