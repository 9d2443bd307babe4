#pragma once

#include <optional>
#include <string>

namespace kivo::templates::platform::os {

/// The value of an environment variable; nothing if it isn't set. [any thread, as long as nobody
/// changes the environment meanwhile]
std::optional<std::string> environmentVariable(const char* name);

} // namespace kivo::templates::platform::os
