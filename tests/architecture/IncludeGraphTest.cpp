#include "tests/architecture/IncludeGraph.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using mesk::tests::findCircle;
using mesk::tests::forbiddenArrows;
using mesk::tests::IncludeGraph;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

IncludeGraph repository()
{
    return mesk::tests::readIncludes(
        MESK_SOURCE_DIR, {"plugin", "interface", "packets", "gvcp", "support", "stand-ins", "host"});
}

} // namespace

TEST(IncludeGraph, repositoryHasOnlyTheArrowsOfTheArchitecture)
{
    const auto graph = repository();
    ASSERT_GT(graph.size(), 50U) << "the sources weren't found";
    EXPECT_THAT(forbiddenArrows(graph), IsEmpty());
    EXPECT_THAT(findCircle(graph), IsEmpty());
}

TEST(IncludeGraph, everyForbiddenArrowIsNamed)
{
    const IncludeGraph wrong{
        {"interface/FrameSend.cpp",
         {"stand-ins/board/BoardControl.h", "packets/EthernetFrame.h", "<vector>"}},
        {"packets/EthernetFrame.cpp", {"support/logging/Logger.h", "<QByteArray>", "<boost/any.hpp>"}},
        {"support/logging/Logging.cpp", {"plugin/Plugin.cpp", "<dlfcn.h>"}},
        {"interface/PhyReset.cpp", {"<unistd.h>", "packets/IPv4Packet.h"}},
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
                            "support/logging/Logging.cpp -> plugin/Plugin.cpp",
                            "support/logging/Logging.cpp -> <dlfcn.h>"));
}

TEST(IncludeGraph, circleIsFoundBehindALongerWay)
{
    const IncludeGraph circle{{"a.h", {"b.h"}}, {"b.h", {"c.h"}}, {"c.h", {"d.h", "b.h"}}, {"d.h", {}}};
    EXPECT_THAT(findCircle(circle), ElementsAre("b.h", "c.h", "b.h"));
    const IncludeGraph diamond{{"a.h", {"b.h", "c.h"}}, {"b.h", {"d.h"}}, {"c.h", {"d.h"}}, {"d.h", {}}};
    EXPECT_THAT(findCircle(diamond), SizeIs(0));
}
