#pragma once

#include "plugin/binding/BindingStatus.h"
#include "plugin/binding/OperationSlot.h"

#include <cstdint>

/// The operations of the board library `kivo_hal`, one wrapper each.
///
/// The library is found under the installation root and bound at the first call of any of them; where
/// it can't be loaded, every call tries again. An operation that isn't there answers `kHalUnavailable`
/// for a status, 0 for a handle, a count or an integer, null for a text. A bound call costs one test
/// and one indirect call. Calling convention C. Handles are opaque, 0 is none.
///
/// [any thread] Register and queue operations may run at once on one handle.
namespace kivo::plugin {

/// Loads the board library and looks every operation up, once each. The wrappers do this by themselves.
/// @returns 0, or `kHalUnavailable` if the library can't be loaded.
std::int32_t bindKHal();

namespace binding {

/// The slots, in the order of the look-ups. `initDevice` is the sentinel: empty means not bound yet,
/// and it is filled after all others.
struct KHalTable {
    OperationSlot<std::uint64_t(std::uint32_t), 0U> initDevice;
    OperationSlot<std::int32_t(std::uint64_t), kHalUnavailable> freeDevice;
    OperationSlot<std::uint32_t(), 0U> getDeviceCount;
    OperationSlot<std::uint64_t(std::uint32_t), 0U> getDevice;
    OperationSlot<std::int32_t(std::uint64_t), kHalUnavailable> putDevice;
    OperationSlot<std::int32_t(std::uint64_t, const char*), 0> getBoardInfoInt;
    OperationSlot<const char*(std::uint64_t, const char*), nullptr> getBoardInfoString;
    OperationSlot<std::int32_t(std::uint64_t, std::uint64_t), kHalUnavailable> configureFpga;
    OperationSlot<std::int32_t(std::uint64_t, std::uint32_t, std::uint64_t), kHalUnavailable> registerWrite;
    OperationSlot<std::int32_t(std::uint64_t, std::uint32_t, std::uint64_t*), kHalUnavailable> registerRead;
    OperationSlot<std::int32_t(std::uint64_t, std::uint32_t), kHalUnavailable> dataQueueClear;
    OperationSlot<std::int32_t(std::uint64_t, std::uint32_t, void*, std::uint32_t, std::uint32_t),
                  kHalUnavailable>
        dataQueueReadBufferLong;
    OperationSlot<std::int32_t(std::uint64_t, std::uint32_t), 0> dataQueueGetNrOfLostWords;
};

// Said to be hidden here already: else each access from another source would go through the global
// offset table.
extern KHalTable kHal __attribute__((visibility("hidden")));

template <typename Slot, typename... Arguments>
auto callKHal(const Slot& slot, Arguments... arguments)
{
    if (seldom(kHal.initDevice.isEmpty()))
        return slot.bindAndCall(bindKHal, arguments...);
    return slot.call(arguments...);
}

template <typename Slot, typename... Arguments>
auto callOptionalKHal(const Slot& slot, Arguments... arguments)
{
    if (seldom(kHal.initDevice.isEmpty()))
        return slot.bindAndCall(bindKHal, arguments...);
    return slot.callOrAnswer(arguments...);
}

} // namespace binding

/// Opens a board for register and queue access. @returns a handle; 0 on failure.
inline std::uint64_t KHalInitDevice(std::uint32_t boardIndex)
{
    return binding::callKHal(binding::kHal.initDevice, boardIndex);
}

/// Gives a handle of `KHalInitDevice` back.
inline std::int32_t KHalFreeDevice(std::uint64_t device)
{
    return binding::callKHal(binding::kHal.freeDevice, device);
}

/// Number of boards.
inline std::uint32_t KHalGetDeviceCount()
{
    return binding::callKHal(binding::kHal.getDeviceCount);
}

/// @param deviceIndex 0 to 31.
/// @returns a handle for `KHalPutDevice`; 0 if the index holds no device.
inline std::uint64_t KHalGetDevice(std::uint32_t deviceIndex)
{
    return binding::callOptionalKHal(binding::kHal.getDevice, deviceIndex);
}

/// Gives a handle of `KHalGetDevice` back.
inline std::int32_t KHalPutDevice(std::uint64_t device)
{
    return binding::callOptionalKHal(binding::kHal.putDevice, device);
}

/// A number that the board tells of itself, by key.
inline std::int32_t KHalGetBoardInfoInt(std::uint64_t device, const char* key)
{
    return binding::callKHal(binding::kHal.getBoardInfoInt, device, key);
}

/// A text that the board tells of itself, by key. @returns a text that the library owns, or null.
inline const char* KHalGetBoardInfoString(std::uint64_t device, const char* key)
{
    return binding::callKHal(binding::kHal.getBoardInfoString, device, key);
}

/// Loads a firmware design into the board. @returns 0 on success, any other value is a failure.
inline std::int32_t KHalConfigureFpga(std::uint64_t device, std::uint64_t design)
{
    return binding::callKHal(binding::kHal.configureFpga, device, design);
}

/// Writes a firmware register.
inline std::int32_t KHalRegisterWrite(std::uint64_t device, std::uint32_t registerId, std::uint64_t value)
{
    return binding::callKHal(binding::kHal.registerWrite, device, registerId, value);
}

/// Reads a firmware register.
/// @param[out] value written only if the result is 0.
inline std::int32_t KHalRegisterRead(std::uint64_t device, std::uint32_t registerId, std::uint64_t* value)
{
    return binding::callKHal(binding::kHal.registerRead, device, registerId, value);
}

/// Throws away what a queue holds.
inline std::int32_t KHalDataQueueClear(std::uint64_t device, std::uint32_t queue)
{
    return binding::callKHal(binding::kHal.dataQueueClear, device, queue);
}

/// Takes words out of a queue.
/// @returns the number of bytes delivered, 0 or more; `kHalQueueTimeout` if the time ran out; another
///     negative number for an error.
inline std::int32_t KHalDataQueueReadBufferLong(std::uint64_t device, std::uint32_t queue, void* buffer,
                                                std::uint32_t sizeBytes, std::uint32_t timeoutMs)
{
    return binding::callKHal(binding::kHal.dataQueueReadBufferLong, device, queue, buffer, sizeBytes,
                             timeoutMs);
}

/// Number of words that a queue lost for want of space.
inline std::int32_t KHalDataQueueGetNrOfLostWords(std::uint64_t device, std::uint32_t queue)
{
    return binding::callKHal(binding::kHal.dataQueueGetNrOfLostWords, device, queue);
}

} // namespace kivo::plugin
