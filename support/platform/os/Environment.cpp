#include "support/platform/os/Environment.h"

#include <cstdlib>

namespace kivo::templates::platform::os {

std::optional<std::string> environmentVariable(const char* name)
{
    const char* const value = std::getenv(name);
    if (value == nullptr)
        return std::nullopt;
    return std::string(value);
}

} // namespace kivo::templates::platform::os
