#pragma once

#include <map>
#include <string>
#include <vector>

namespace mesk::tests {

/// File (relative to the repository root) to the headers that it includes, as they are spelled there:
/// quoted ones relative to the root, others with their angle brackets.
using IncludeGraph = std::map<std::string, std::vector<std::string>>;

/// Reads the includes of all C++ files below the given folders.
IncludeGraph readIncludes(const std::string& root, const std::vector<std::string>& folders);

/// Every arrow that the architecture doesn't have, as "FROM -> TO".
std::vector<std::string> forbiddenArrows(const IncludeGraph& graph);

/// One circle of the graph, as its files in order; empty if there is none.
std::vector<std::string> findCircle(const IncludeGraph& graph);

} // namespace mesk::tests
