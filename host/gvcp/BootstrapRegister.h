#pragma once

#include <QtGlobal>

namespace mesk::host {

/// Bootstrap registers (GigE Vision) that this program uses: the address of each.
namespace BootstrapRegister {
enum : quint32 {
    FirstUrl = 0x0200, ///< text of urlSizeBytes: where the description lies
    MessageChannelCount = 0x0900,
    HeartbeatTimeout = 0x0938, ///< in ms
    ControlPrivilege = 0x0a00,
    MessageChannelPort = 0x0b00, ///< of the receiver, in the low half; 0 closes the channel
    MessageChannelDestination = 0x0b10,
};
} // namespace BootstrapRegister

constexpr quint32 urlSizeBytes = 512;

/// Bits of the control privilege.
constexpr quint32 exclusiveAccess = 1;
constexpr quint32 controlAccess = 2;

} // namespace mesk::host
