#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <map>
#include <regex>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

using Texts = std::vector<std::string>;
/// File (relative to the repository root) to the headers that it includes, as they are spelled there:
/// quoted ones relative to the root, others with their angle brackets.
using IncludeGraph = std::map<std::string, Texts>;

/// What the files below a path may include of the repository; "<" entries are for headers in brackets
/// that not everybody may include.
struct Rule {
    std::string path;
    Texts allowed;
};

/// The first rule whose path the file starts with holds. A file without a rule is an error itself.
const std::vector<Rule> rules{
    {"support/platform/os/", {"support/platform/os/", "<system"}},
    // <mutex> for its scope guards, which take the locks of os/ too
    {"support/platform/", {"support/platform/", "plugin/LibraryInitController.h", "<boost/", "<mutex>"}},
    {"support/logging/",
     {"support/logging/", "support/platform/", "plugin/binding/LoadedLibrary.h", "<boost/"}},
    {"support/config/", {"support/config/", "support/platform/", "plugin/binding/InstallRoot.h", "<boost/"}},
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
    {"stack/", {"stack/", "packets/", "gvcp/", "<Q", "<chrono>"}},
    {"stand-ins/framework/", {"<kivo/", "<boost/", "stand-ins/framework/", "<system"}},
    {"stand-ins/board/",
     {"stand-ins/board/", "stand-ins/camera/", "stack/", "support/platform/os/", "<Q", "<pcap", "<fmt/",
      "<system"}},
    {"stand-ins/dispatcher/", {"stand-ins/dispatcher/", "<spdlog/", "<system"}},
    {"stand-ins/camera/", {"stand-ins/camera/", "stack/", "packets/", "gvcp/", "<Q"}},
    {"host/",
     {"host/", "stack/", "packets/", "gvcp/", "interface/PhysicalNetworkInterfaceEventQueue.h",
      "interface/PhysicalNetworkInterfaceEvent.h", "interface/PniActionCommandTimeout.h", "support/platform/",
      "stand-ins/board/BoardControl.h", "stand-ins/dispatcher/DispatcherControl.h", "stand-ins/camera/",
      "<kivo/", "<boost/", "<Q", "<CLI/", "<fmt/", "<nlohmann/", "<pcap", "<system"}},
};

/// Headers of the operating system, and those of the standard library that reach its threads and files.
const std::regex
    systemHeader("<(sys/.*|linux/.*|net/.*|(dlfcn|fcntl|link|poll|pthread|signal|syslog|unistd|windows)\\.h>|"
                 "(csignal|filesystem|fstream|mutex|thread|condition_variable|chrono)>)");

bool startsWith(const std::string& text, const std::string& prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool startsWithOneOf(const std::string& text, const Texts& prefixes)
{
    return std::any_of(prefixes.begin(), prefixes.end(),
                       [&](const std::string& each) { return startsWith(text, each); });
}

bool isAllowed(const Rule& rule, const std::string& header)
{
    const bool system = std::regex_match(header, systemHeader);
    const bool library = header.find('/') != std::string::npos || startsWithOneOf(header, {"<Q", "<pcap"});
    if (header.front() == '<' && !system && !library)
        return true; // of the language
    return startsWithOneOf(header, rule.allowed) || (system && startsWithOneOf("<system", rule.allowed));
}

Texts includesOf(const fs::path& file)
{
    const std::string directive = "#include ";
    Texts headers;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        if (!startsWith(line, directive) || line.size() < directive.size() + 3)
            continue;
        const bool quoted = line[directive.size()] == '"';
        const std::size_t from = directive.size() + (quoted ? 1 : 0);
        headers.push_back(line.substr(from, line.find(quoted ? '"' : '>', from) + (quoted ? 0 : 1) - from));
    }
    return headers;
}

IncludeGraph readRepository()
{
    IncludeGraph graph;
    for (const char* folder :
         {"plugin", "interface", "packets", "gvcp", "stack", "support", "stand-ins", "host"})
        for (const fs::directory_entry& entry :
             fs::recursive_directory_iterator(fs::path(MESK_SOURCE_DIR) / folder))
            if (entry.path().extension() == ".h" || entry.path().extension() == ".cpp")
                graph[fs::relative(entry.path(), MESK_SOURCE_DIR).generic_string()] =
                    includesOf(entry.path());
    return graph;
}

/// Every arrow that the architecture doesn't have, as "FROM -> TO".
Texts forbiddenArrows(const IncludeGraph& graph)
{
    Texts found;
    for (const auto& [file, headers] : graph) {
        const auto rule = std::find_if(rules.begin(), rules.end(), [&name = file](const Rule& each) {
            return startsWith(name, each.path);
        });
        if (rule == rules.end())
            found.emplace_back(file).append(" -> (stands in no known place)");
        else
            for (const std::string& header : headers)
                if (!isAllowed(*rule, header))
                    found.emplace_back(file).append(" -> ").append(header);
    }
    return found;
}

/// The files that stand in a circle, and those from which one is reached.
Texts filesWithCircles(IncludeGraph graph)
{
    const auto isEnd = [&graph](const Texts& headers) {
        return std::none_of(headers.begin(), headers.end(),
                            [&graph](const std::string& header) { return graph.count(header) != 0; });
    };
    // Takes away who includes nobody of the rest, until only those are left who include each other.
    for (auto node = graph.begin(); node != graph.end();) {
        const bool end = isEnd(node->second);
        if (end)
            graph.erase(node);
        node = end ? graph.begin() : std::next(node);
    }
    Texts files;
    for (const auto& node : graph)
        files.push_back(node.first);
    return files;
}

TEST(IncludeGraph, repositoryHasOnlyTheArrowsOfTheArchitecture)
{
    const IncludeGraph graph = readRepository();
    ASSERT_GT(graph.size(), 50U) << "the sources weren't found";
    EXPECT_THAT(graph.at("packets/EthernetFrame.h"), testing::Contains("packets/NetworkPacket.h"));
    EXPECT_THAT(forbiddenArrows(graph), IsEmpty());
    EXPECT_THAT(filesWithCircles(graph), IsEmpty());
}

TEST(IncludeGraph, everyForbiddenArrowIsNamed)
{
    const IncludeGraph wrong{
        {"interface/FrameSend.cpp",
         {"stand-ins/board/BoardControl.h", "packets/EthernetFrame.h", "<vector>"}},
        {"packets/EthernetFrame.cpp", {"support/logging/Logger.h", "<QByteArray>", "<boost/any.hpp>"}},
        {"support/logging/Logging.cpp", {"plugin/Plugin.cpp", "<dlfcn.h>"}},
        {"interface/PhyReset.cpp", {"<unistd.h>", "packets/IPv4Packet.h"}},
        {"stack/Time.h", {"<chrono>", "<thread>", "support/platform/os/Clock.h"}},
        {"plugin/LibraryInitController.cpp", {"support/logging/Logging.h"}},
        {"elsewhere/File.cpp", {}},
    };
    EXPECT_THAT(forbiddenArrows(wrong),
                ElementsAre("elsewhere/File.cpp -> (stands in no known place)",
                            "interface/FrameSend.cpp -> stand-ins/board/BoardControl.h",
                            "interface/PhyReset.cpp -> <unistd.h>",
                            "interface/PhyReset.cpp -> packets/IPv4Packet.h",
                            "packets/EthernetFrame.cpp -> support/logging/Logger.h",
                            "packets/EthernetFrame.cpp -> <boost/any.hpp>",
                            "plugin/LibraryInitController.cpp -> support/logging/Logging.h",
                            "stack/Time.h -> <thread>", "stack/Time.h -> support/platform/os/Clock.h",
                            "support/logging/Logging.cpp -> plugin/Plugin.cpp",
                            "support/logging/Logging.cpp -> <dlfcn.h>"));
}

TEST(IncludeGraph, circleIsFoundBehindALongerWay)
{
    EXPECT_THAT(filesWithCircles({{"a", {"b"}}, {"b", {"c"}}, {"c", {"d", "b"}}, {"d", {}}}),
                ElementsAre("a", "b", "c"));
    EXPECT_THAT(filesWithCircles({{"a", {"b", "c"}}, {"b", {"d"}}, {"c", {"d"}}, {"d", {}}}), IsEmpty());
}

} // namespace
