#include "tests/architecture/IncludeGraph.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

namespace mesk::tests {

namespace {

using Prefixes = std::vector<std::string>;

/// What the files below a path may include of the repository; "<" entries are for headers in brackets
/// that not everybody may include.
struct Rule {
    std::string path;
    Prefixes allowed;
};

/// The first rule whose path the file starts with holds. A file without a rule is an error itself.
const std::vector<Rule>& rules()
{
    static const std::vector<Rule> all{
        {"support/platform/os/", {"support/platform/os/", "<system"}},
        // <mutex> for its scope guards, which take the locks of os/ too
        {"support/platform/", {"support/platform/", "plugin/LibraryInitController.h", "<boost/", "<mutex>"}},
        {"support/logging/",
         {"support/logging/", "support/platform/", "plugin/binding/LoadedLibrary.h", "<boost/"}},
        {"support/config/",
         {"support/config/", "support/platform/", "plugin/binding/InstallRoot.h", "<boost/"}},
        {"plugin/binding/", {"plugin/binding/", "support/platform/"}},
        {"plugin/LibraryInitController",
         {"plugin/LibraryInitController.h", "support/platform/GuardedSingletonBase.h",
          "support/platform/SpinLockVariableGuard.h"}},
        {"plugin/Plugin.cpp",
         {"plugin/LibraryInitController.h", "interface/KivoGbePhysicalNetworkInterface.h", "support/logging/",
          "support/platform/os/Thread.h", "<kivo/"}},
        {"interface/",
         {"interface/", "plugin/binding/", "support/", "packets/EthernetFrame.h", "<kivo/", "<boost/", "<Q"}},
        {"packets/", {"packets/", "gvcp/", "<Q"}},
        {"gvcp/", {"gvcp/", "packets/", "<Q"}},
        {"stand-ins/framework/", {"<kivo/", "<boost/", "stand-ins/framework/", "<system"}},
        {"stand-ins/board/", {"stand-ins/board/", "<Q", "<pcap", "<fmt/", "<system"}},
        {"stand-ins/dispatcher/", {"stand-ins/dispatcher/", "<spdlog/", "<system"}},
        {"stand-ins/camera/", {"stand-ins/camera/", "packets/", "gvcp/", "<Q"}},
        {"host/",
         {"host/", "packets/", "gvcp/", "interface/PhysicalNetworkInterfaceEventQueue.h",
          "interface/PhysicalNetworkInterfaceEvent.h", "interface/PniActionCommandTimeout.h",
          "support/platform/", "stand-ins/board/BoardControl.h", "stand-ins/dispatcher/DispatcherControl.h",
          "stand-ins/camera/", "<kivo/", "<boost/", "<Q", "<CLI/", "<fmt/", "<nlohmann/", "<pcap",
          "<system"}},
    };
    return all;
}

bool startsWith(const std::string& text, const std::string& prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

/// Headers of the operating system, and those of the standard library that reach its threads and files.
bool isSystemHeader(const std::string& header)
{
    static const Prefixes system{"<sys/",
                                 "<linux/",
                                 "<dlfcn.h>",
                                 "<fcntl.h>",
                                 "<link.h>",
                                 "<poll.h>",
                                 "<pthread.h>",
                                 "<signal.h>",
                                 "<csignal>",
                                 "<syslog.h>",
                                 "<unistd.h>",
                                 "<windows.h>",
                                 "<filesystem>",
                                 "<fstream>",
                                 "<mutex>",
                                 "<thread>",
                                 "<condition_variable>",
                                 "<chrono>"};
    return std::any_of(system.begin(), system.end(),
                       [&](const auto& each) { return startsWith(header, each); });
}

bool isLibraryHeader(const std::string& header)
{
    return header.find('/') != std::string::npos || startsWith(header, "<Q") || startsWith(header, "<pcap");
}

bool isAllowed(const Rule& rule, const std::string& header)
{
    const bool system = isSystemHeader(header);
    if (header.front() == '<' && !system && !isLibraryHeader(header)) {
        return true; // of the language
    }
    return std::any_of(rule.allowed.begin(), rule.allowed.end(), [&](const auto& each) {
        return startsWith(header, each) || (system && each == "<system");
    });
}

std::string includedHeader(const std::string& line)
{
    const std::string directive = "#include ";
    if (!startsWith(line, directive)) {
        return {};
    }
    const std::string rest = line.substr(directive.size());
    if (rest.size() < 3) {
        return {};
    }
    const char close = rest.front() == '<' ? '>' : '"';
    const auto end = rest.find(close, 1);
    return rest.front() == '<' ? rest.substr(0, end + 1) : rest.substr(1, end - 1);
}

std::vector<std::string> includesOf(const std::filesystem::path& file)
{
    std::vector<std::string> headers;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        if (auto header = includedHeader(line); !header.empty()) {
            headers.push_back(std::move(header));
        }
    }
    return headers;
}

/// Walks the graph in depth; `path` is the way from the start to the file that is visited.
bool visit(const IncludeGraph& graph, const std::string& file, std::set<std::string>& done,
           std::vector<std::string>& path)
{
    if (const auto again = std::find(path.begin(), path.end(), file); again != path.end()) {
        path.erase(path.begin(), again);
        path.push_back(file);
        return true;
    }
    const auto node = graph.find(file);
    if (node == graph.end() || !done.insert(file).second) {
        return false;
    }
    path.push_back(file);
    for (const auto& header : node->second) {
        if (visit(graph, header, done, path)) {
            return true;
        }
    }
    path.pop_back();
    return false;
}

} // namespace

IncludeGraph readIncludes(const std::string& root, const std::vector<std::string>& folders)
{
    namespace fs = std::filesystem;
    IncludeGraph graph;
    for (const auto& folder : folders) {
        if (!fs::exists(fs::path(root) / folder)) {
            continue;
        }
        for (const auto& entry : fs::recursive_directory_iterator(fs::path(root) / folder)) {
            const auto extension = entry.path().extension();
            if (extension == ".h" || extension == ".cpp") {
                graph[fs::relative(entry.path(), root).generic_string()] = includesOf(entry.path());
            }
        }
    }
    return graph;
}

std::vector<std::string> forbiddenArrows(const IncludeGraph& graph)
{
    std::vector<std::string> found;
    for (const auto& [file, headers] : graph) {
        const auto rule = std::find_if(rules().begin(), rules().end(), [&name = file](const Rule& each) {
            return startsWith(name, each.path);
        });
        if (rule == rules().end()) {
            found.push_back(file + " -> (stands in no known place)");
            continue;
        }
        for (const auto& header : headers) {
            if (!isAllowed(*rule, header)) {
                found.push_back(file + " -> " + header);
            }
        }
    }
    return found;
}

std::vector<std::string> findCircle(const IncludeGraph& graph)
{
    std::set<std::string> done;
    for (const auto& node : graph) {
        std::vector<std::string> path;
        if (visit(graph, node.first, done, path)) {
            return path;
        }
    }
    return {};
}

} // namespace mesk::tests
