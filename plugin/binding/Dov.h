#pragma once

#include "plugin/binding/BindingStatus.h"
#include "plugin/binding/OperationSlot.h"

#include <cstdint>

/// The operations of the firmware design runtime `dovrt`, one wrapper each.
///
/// Bound as the board library is (`KHal.h`). An operation that isn't there answers `dovUnavailable` for
/// a status, 0 for a handle or an id. Calling convention C. Design handles are opaque, 0 is none.
/// [any thread]
namespace kivo::plugin {

/// Loads the runtime and looks every operation up, once each. The wrappers do this by themselves.
/// @returns 0, or `dovNotLoaded` if the library can't be loaded.
std::int32_t bindDov();

namespace binding {

/// The slots, in the order of the look-ups. `loadDovFileWithType` is the sentinel: empty means not
/// bound yet, and it is filled after all others. Nothing calls it, so its type is left open.
struct DovTable {
    OperationSlot<std::int32_t(), dovUnavailable> loadDovFileWithType;
    OperationSlot<std::uint64_t(std::uint8_t, std::uint8_t), 0U> firmwareTrampoline;
    OperationSlot<std::uint32_t(std::uint64_t, const char*), 0U> getRegisterByName;
    OperationSlot<std::int32_t(std::uint64_t), dovUnavailable> unloadDovFile;
};

// Hidden for the same reason as the board library's table.
extern DovTable dov __attribute__((visibility("hidden")));

template <typename Slot, typename... Arguments>
auto callDov(const Slot& slot, Arguments... arguments)
{
    if (seldom(dov.loadDovFileWithType.isEmpty()))
        return slot.bindAndCall(bindDov, arguments...);
    return slot.call(arguments...);
}

template <typename Slot, typename... Arguments>
auto callOptionalDov(const Slot& slot, Arguments... arguments)
{
    if (seldom(dov.loadDovFileWithType.isEmpty()))
        return slot.bindAndCall(bindDov, arguments...);
    return slot.callOrAnswer(arguments...);
}

} // namespace binding

/// Finds the firmware design for a firmware version. @returns a design handle; 0 on failure.
inline std::uint64_t DovFirmwareTrampoline(std::uint8_t firmwareMajor, std::uint8_t firmwareMinor)
{
    return binding::callOptionalDov(binding::dov.firmwareTrampoline, firmwareMajor, firmwareMinor);
}

/// Finds a firmware register by its name. @returns its id; 0 if the design has no such register.
inline std::uint32_t DovGetRegisterByName(std::uint64_t design, const char* name)
{
    return binding::callDov(binding::dov.getRegisterByName, design, name);
}

/// Gives a design back.
inline std::int32_t DovUnloadDovFile(std::uint64_t design)
{
    return binding::callDov(binding::dov.unloadDovFile, design);
}

} // namespace kivo::plugin
