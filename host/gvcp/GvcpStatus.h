#pragma once

#include <QtGlobal>

#include <string>

namespace mesk::host {

/// Status codes of an acknowledge (GigE Vision) that this program tells apart.
namespace GvcpStatus {
enum : quint16 {
    Success = 0x0000,
    NotImplemented = 0x8001,
    InvalidParameter = 0x8002,
    InvalidAddress = 0x8003,
    WriteProtect = 0x8004,
    BadAlignment = 0x8005,
    AccessDenied = 0x8006,
    Busy = 0x8007,
};
} // namespace GvcpStatus

/// A status in words, with its number: "access denied (0x8006)".
std::string gvcpStatusText(quint16 status);

} // namespace mesk::host
