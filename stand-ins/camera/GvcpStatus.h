#pragma once

#include <QtGlobal>

namespace emulated_camera {

/// Status codes of GVCP acknowledges (GigE Vision), host byte order.
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
    NoReferenceTime = 0x8013,
    Error = 0x8fff,
};
} // namespace GvcpStatus

} // namespace emulated_camera
