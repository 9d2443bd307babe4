#pragma once

#include <string>
#include <vector>

namespace mesk::host {

/// A frame in a line, as told by the highest layer that knows each part.
struct Summary {
    std::string source;
    std::string destination;
    std::string protocol;
    std::string info;
    std::vector<std::string> reasons; ///< of all layers: why one isn't valid, or isn't followed by another
};

} // namespace mesk::host
