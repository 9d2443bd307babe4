#pragma once

#include <string>

namespace mesk::host {

/// A frame in a line, as told by the highest layer that knows each part.
struct Summary {
    std::string source;
    std::string destination;
    std::string protocol;
    std::string info;
};

} // namespace mesk::host
