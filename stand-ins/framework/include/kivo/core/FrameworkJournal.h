#pragma once

#include <kivo/core/Export.h>

#include <string>
#include <vector>

namespace kivo::core {

/// What this stand-in adds to the framework, so that a test sees in which order a plugin brings the
/// libraries up and takes them down. [any thread]

/// The names of the calls of `KivoCoreInit`, `KivoMeskInit`, `KivoMeskDeinit` and `KivoCoreDeinit`
/// since the start or the last clearing, oldest first. The oldest go when there are very many.
KIVO_EXPORT std::vector<std::string> frameworkJournal();
KIVO_EXPORT void clearFrameworkJournal();

/// Adds an entry.
KIVO_EXPORT void noteFrameworkCall(const char* name);

} // namespace kivo::core
