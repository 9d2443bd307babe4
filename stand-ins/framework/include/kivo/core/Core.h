#pragma once

#include <kivo/core/Export.h>

extern "C" {
/// Brings the core library up, and takes one such use back. [any thread]
KIVO_EXPORT void KivoCoreInit();
KIVO_EXPORT void KivoCoreDeinit();
}
