#pragma once

#include <kivo/core/Export.h>

extern "C" {
/// Brings the packet-exchange library up, and takes one such use back. [any thread]
KIVO_EXPORT void KivoMeskInit();
KIVO_EXPORT void KivoMeskDeinit();
}
